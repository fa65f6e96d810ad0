#include "message_check.h"

#include <mmsbrix/mms/charsets.h>

#include <chrono>
#include <cstdio>
#include <random>
#include <string_view>

namespace mmsbrix::tool {
namespace {

// A text begins with what cannot be told from a length, a number or a quote on the wire.
bool beginsLikeAText(std::string_view text) {
  if (text.empty()) return true;
  const auto first = static_cast<unsigned char>(text.front());
  return first == 9 || first == 10 || first == 13 || (first >= 32 && first != 127);
}

void checkText(std::string_view text, const char* what, std::vector<std::string>& problems) {
  if (!beginsLikeAText(text))
    problems.push_back(std::string(what) + " begins with a control character");
}

void checkCharset(const CMMString& text, const char* what, std::vector<std::string>& problems) {
  if (text.Charset().empty() || isFieldCharset(text.Charset())) return;
  problems.push_back(std::string(what) + ": the charset " + std::string(text.Charset()) +
                     " has no number in a header field (use utf-8)");
}

void checkAddresses(CMMAddrList& list, const char* what, std::vector<std::string>& problems) {
  for (const CMMAddr& address : list) {
    if (address.Value()->Text().empty())
      problems.push_back(std::string(what) + " has an empty address");
    checkText(address.Value()->Text(), what, problems);
    checkCharset(*address.Value(), what, problems);
  }
}

void checkBody(CMMPart& root, std::vector<std::string>& problems) {
  const CMMHdr* type = root.Headers()->Find("Content-Type");
  if (type == nullptr || type->Value().empty()) {
    problems.emplace_back("there is no content type");
    return;
  }
  for (unsigned i = 0; i < root.ChildCount(); ++i) {
    const CMMPart& part = *root.Child(i);
    CMMHdrList headers = *part.Headers();
    const std::string name = "part " + std::to_string(i + 1);
    if (headers.Find("Content-Type") == nullptr) problems.push_back(name + " has no content type");
    if (part.GetContent() == nullptr) problems.push_back(name + " has no content");
  }
}

}  // namespace

std::vector<std::string> findProblems(CMMsg& message) {
  std::vector<std::string> problems;
  if (message.GetMsgType() != CMMsg::MSG_TYPE_SEND_REQ) {
    problems.emplace_back("only an m-send-req can be written");
  }
  if (message.GetTo()->Count() + message.GetCc()->Count() + message.GetBcc()->Count() == 0) {
    problems.emplace_back("there is no recipient (--to, --cc or --bcc)");
  }
  const char* id = message.GetTransactionId();
  if (id == nullptr || *id == 0) {
    problems.emplace_back("there is no transaction id");
  } else {
    checkText(id, "the transaction id", problems);
  }
  checkAddresses(*message.GetTo(), "To", problems);
  checkAddresses(*message.GetCc(), "Cc", problems);
  checkAddresses(*message.GetBcc(), "Bcc", problems);
  checkText(message.GetFrom()->Value()->Text(), "From", problems);
  if (const CMMString* subject = message.GetSubject(); subject != nullptr) {
    checkText(subject->Text(), "the subject", problems);
    checkCharset(*subject, "the subject", problems);
  }
  checkBody(*message.Content(), problems);
  return problems;
}

std::string uniqueTransactionId() {
  std::random_device random;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
  char text[48];
  std::snprintf(text, sizeof text, "T%llX-%08X", static_cast<unsigned long long>(milliseconds),
                random());
  return text;
}

}  // namespace mmsbrix::tool
