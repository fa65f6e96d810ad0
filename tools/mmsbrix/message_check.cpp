#include "message_check.h"

#include <mmsbrix/mms/charsets.h>

#include <algorithm>
#include <string_view>

namespace mmsbrix::tool {
namespace {

// A first octet below 32 is a length on the wire, 127 a quote.
bool beginsLikeAText(std::string_view text) {
  return text.empty() || (static_cast<unsigned char>(text.front()) >= 32 && text.front() != 127);
}

// A name of header or parameter: a token.  [RFC 2616 2.2]
bool isToken(std::string_view text) {
  constexpr std::string_view kSeparators = "()<>@,;:\\\"/[]?={} \t";
  return !text.empty() && std::ranges::all_of(text, [&](char c) {
    return static_cast<unsigned char>(c) > 32 && static_cast<unsigned char>(c) < 127 &&
           kSeparators.find(c) == std::string_view::npos;
  });
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

void checkHeader(const CMMHdr& header, const std::string& where,
                 std::vector<std::string>& problems) {
  const std::string name(header.Name());
  if (!isToken(name)) problems.push_back(where + ": '" + name + "' is no header name");
  checkText(header.Value(), (where + ": " + name).c_str(), problems);
  for (const CMMParam& parameter : *header.Params()) {
    if (!isToken(parameter.Name())) {
      problems.push_back(where + ": '" + std::string(parameter.Name()) + "' is no parameter name");
    }
    checkText(parameter.Value(), (where + ": " + std::string(parameter.Name())).c_str(), problems);
  }
}

// "major.minor" that fit three and four bits.
void checkVersion(std::string_view version, std::vector<std::string>& problems) {
  const bool fits =
      version.size() >= 3 && version[0] >= '0' && version[0] <= '7' && version[1] == '.' &&
      (version.size() == 3 || (version.size() == 4 && version[2] == '1' && version[3] <= '5')) &&
      version[2] >= '0' && version.back() >= '0' && version.back() <= '9';
  if (!fits) problems.push_back("'" + std::string(version) + "' is no MMS version such as 1.2");
}

void checkBody(CMMPart& root, std::vector<std::string>& problems) {
  const CMMHdr* type = root.Headers()->Find("Content-Type");
  if (type == nullptr || type->Value().empty()) {
    problems.emplace_back("there is no content type");
    return;
  }
  checkHeader(*type, "the body", problems);
  for (unsigned i = 0; i < root.ChildCount(); ++i) {
    const CMMPart& part = *root.Child(i);
    CMMHdrList headers = *part.Headers();
    const std::string name = "part " + std::to_string(i + 1);
    if (headers.Find("Content-Type") == nullptr) problems.push_back(name + " has no content type");
    for (const CMMHdr& header : *part.Headers()) checkHeader(header, name, problems);
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
  checkVersion(message.GetVersion(), problems);
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

}  // namespace mmsbrix::tool
