#include "relay_desk.h"

#include <mmsbrix/mms/inspector.h>

#include <algorithm>
#include <cctype>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "host.h"
#include "relay_answer.h"

namespace mmsbrix::tool {
namespace {

constexpr char kPost[] = "POST";
constexpr std::string_view kMessagePath = "/message/";  // the message id follows
constexpr std::string_view kMmsContentType = "application/vnd.wap.mms-message";
constexpr char kTextContentType[] = "text/plain; charset=utf-8";
constexpr char kRealm[] = "mmsbrix relay";

bool isMmsContentType(std::string_view value) {
  value = value.substr(0, value.find(';'));
  while (!value.empty() && value.back() == ' ') value.remove_suffix(1);
  return equalsIgnoringCase(value, kMmsContentType);
}

bool authorized(const std::string& value, const std::string& credentials) {
  constexpr std::string_view kBasic = "Basic ";
  if (!equalsIgnoringCase(std::string_view(value).substr(0, kBasic.size()), kBasic)) return false;
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string given;
  unsigned bits = 0;
  int count = 0;
  for (const char c : std::string_view(value).substr(kBasic.size())) {
    const std::size_t digit = kDigits.find(c);
    if (digit == std::string_view::npos) break;
    bits = bits << 6 | static_cast<unsigned>(digit);
    if ((count += 6) < 8) continue;
    count -= 8;
    given += static_cast<char>(bits >> count & 0xFF);
  }
  return given == credentials;
}

// Where the path begins in a request target, which may be a whole URL.
std::size_t pathPosition(std::string_view target) {
  const std::size_t scheme = target.starts_with('/') ? std::string_view::npos : target.find("://");
  return scheme == std::string_view::npos ? 0
                                          : std::min(target.find('/', scheme + 3), target.size());
}

// Gives a complete file the first free name of "stem.mms", "stem-1.mms" and so on: a relay that was
// restarted within the second may have its old process number, and messages of before under the
// same names.  The path, empty on failure.
std::string nameStored(const std::filesystem::path& temporary, const std::string& stem) {
  namespace fs = std::filesystem;
  constexpr int kMostTries = 1000;
  std::error_code failure;
  for (int number = 0; number < kMostTries; ++number) {
    std::string text = stem + (number == 0 ? "" : "-" + std::to_string(number)) + ".mms";
    const fs::path file = host::pathOf(text);
    fs::create_hard_link(temporary, file, failure);
    if (failure == std::errc::file_exists) continue;
    if (failure) {  // a file system without links
      if (fs::exists(file, failure)) continue;
      fs::rename(temporary, file, failure);
      return failure ? std::string() : text;
    }
    fs::remove(temporary, failure);
    return text;
  }
  return {};
}

// Writes a PDU under a name of its own, complete before it has that name.  The path, empty on
// failure.
std::string storeFile(const std::string& directory, std::uint64_t number,
                      const std::vector<std::uint8_t>& pdu) {
  namespace fs = std::filesystem;
  const fs::path folder = host::pathOf(directory);
  const std::string name = std::to_string(std::time(nullptr)) + "-" +
                           std::to_string(host::processId()) + "-" + std::to_string(number);
  const fs::path temporary = folder / (name + ".part");
  std::error_code failure;
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(pdu.data()), static_cast<std::streamsize>(pdu.size()));
    out.close();
    if (!out) {
      fs::remove(temporary, failure);
      return {};
    }
  }
  std::string file = nameStored(temporary, host::textOf(folder / name));
  if (file.empty()) fs::remove(temporary, failure);
  return file;
}

RelayAnswer plainAnswer(unsigned httpStatus, std::string_view text) {
  RelayAnswer answer;
  answer.contentType = kTextContentType;
  answer.httpStatus = httpStatus;
  answer.body.assign(text.begin(), text.end());
  answer.body.push_back('\n');
  return answer;
}

}  // namespace

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) ==
           std::tolower(static_cast<unsigned char>(y));
  });
}

std::string withoutCredentials(std::string target) {
  const std::size_t scheme = target.find("://");
  if (scheme == std::string::npos) return target;
  const std::size_t authority = scheme + 3;
  const std::size_t at = target.find_last_of('@', target.find('/', authority));
  if (at != std::string::npos && at >= authority) target.erase(authority, at + 1 - authority);
  return target;
}

std::string describe(const RelayExchange& exchange) {
  std::string line = "#" + std::to_string(exchange.number) + " " + exchange.peer +
                     (exchange.overWap ? " WAP " : " ") + exchange.method + " " + exchange.target +
                     " (" + std::to_string(exchange.octets) + " octets) -> ";
  line += exchange.httpStatus == 0 ? "no answer" : std::to_string(exchange.httpStatus);
  if (exchange.responseStatus != 0) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    const std::string name = responseStatusName(exchange.responseStatus);
    line += std::string(" 0x") + kDigits[exchange.responseStatus >> 4] +
            kDigits[exchange.responseStatus & 0x0F] + (name.empty() ? "" : " " + name);
  }
  if (!exchange.text.empty()) line += ": " + exchange.text;
  if (!exchange.messageId.empty()) line += ", message " + exchange.messageId;
  if (!exchange.file.empty()) line += ", stored as " + exchange.file;
  if (!exchange.notification.empty()) line += ", notification " + exchange.notification;
  std::replace_if(
      line.begin(), line.end(),
      [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
  return line;
}

RelayAnswer RelayDesk::answer(RelayExchange& record, const HeaderOf& headerOf, bool tooLarge) {
  record.number = ++lastNumber_;
  RelayAnswer answer = decide(record, headerOf, tooLarge);
  record.httpStatus = options_.fault == ReplyFault::closed ? 0 : answer.httpStatus;
  keep(record);
  return answer;
}

RelayAnswer RelayDesk::decide(RelayExchange& record, const HeaderOf& headerOf, bool tooLarge) {
  if (!options_.credentials.empty()) {
    const bool own = authorized(headerOf("Authorization"), options_.credentials);
    if (record.asProxy && !own &&
        !authorized(headerOf("Proxy-Authorization"), options_.credentials)) {
      RelayAnswer answer = plainAnswer(407, record.text = "credentials are required");
      answer.extraHeader = "Proxy-Authenticate";
      answer.extraValue = std::string("Basic realm=\"") + kRealm + "\"";
      return answer;
    }
    if (!record.asProxy && !own) {
      RelayAnswer answer = plainAnswer(401, record.text = "credentials are required");
      answer.extraHeader = "WWW-Authenticate";
      answer.extraValue = std::string("Basic realm=\"") + kRealm + "\"";
      return answer;
    }
  }
  if (record.method == "GET" &&
      record.target.compare(pathPosition(record.target), kMessagePath.size(), kMessagePath) == 0) {
    return answerToGet(record);
  }
  if (record.method != kPost) {
    RelayAnswer answer = plainAnswer(405, record.text = "messages are submitted by POST");
    answer.extraHeader = "Allow";
    answer.extraValue = kPost;
    return answer;
  }
  if (tooLarge) {
    return plainAnswer(
        413, record.text = "more than " + std::to_string(options_.maxBodyOctets) + " octets");
  }
  if (!isMmsContentType(headerOf("Content-Type"))) {
    return plainAnswer(415,
                       record.text = "the content type is not " + std::string(kMmsContentType));
  }
  if (options_.httpStatus != 200) {
    return plainAnswer(options_.httpStatus, record.text = "as told");
  }
  return answerToPdu(record, headerOf);
}

RelayAnswer RelayDesk::pduAnswer(std::vector<std::uint8_t> pdu) const {
  RelayAnswer answer;
  answer.contentType = options_.contentType;
  answer.body = std::move(pdu);
  if (options_.fault == ReplyFault::broken) {
    for (std::uint8_t& octet : answer.body) octet ^= 0x80;
  }
  return answer;
}

// A message that waits, as an m-retrieve-conf.
RelayAnswer RelayDesk::answerToGet(RelayExchange& record) {
  if (options_.httpStatus != 200) {
    return plainAnswer(options_.httpStatus, record.text = "as told");
  }
  const std::string id = record.target.substr(pathPosition(record.target) + kMessagePath.size());
  std::vector<std::uint8_t> request;
  {
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(waiting_.begin(), waiting_.end(),
                                    [&](const RelayExchange& e) { return e.messageId == id; });
    if (found == waiting_.end()) return plainAnswer(404, record.text = "no message " + id);
    request = found->pdu;
  }
  record.text = "m-retrieve-conf of message " + id;
  return pduAnswer(encodeRetrieveConf(
      {request, id, "R-" + id, {}, static_cast<std::uint64_t>(std::time(nullptr))}));
}

// Lets an accepted message be fetched, and tells its recipient where it is asked to.
void RelayDesk::deliver(RelayExchange& record, const HeaderOf& headerOf) {
  {
    const std::lock_guard lock(mutex_);
    waiting_.push_back(record);
    while (waiting_.size() > options_.keptExchanges) waiting_.pop_front();
  }
  if (options_.notifyDirectory.empty()) return;
  std::string server = record.target.substr(0, pathPosition(record.target));
  if (server.empty()) {
    server = (options_.tlsCertificate.empty() ? "http://" : "https://") + headerOf("Host");
  }
  record.notification =
      storeFile(options_.notifyDirectory, record.number,
                encodeNotificationInd({record.pdu, record.messageId, "N-" + record.messageId,
                                       server + std::string(kMessagePath) + record.messageId, 0}));
}

RelayAnswer RelayDesk::answerToPdu(RelayExchange& record, const HeaderOf& headerOf) {
  if (const std::string name = reportName(record.pdu); !name.empty()) {
    record.text = name;
    RelayAnswer answer;
    answer.contentType = kTextContentType;
    return answer;
  }
  Verdict verdict = judge(record.pdu);
  if (verdict.accepted() && !options_.storeDirectory.empty()) {
    record.file = storeFile(options_.storeDirectory, record.number, record.pdu);
    if (record.file.empty()) {
      verdict.status = static_cast<std::uint8_t>(ResponseStatus::unspecified);
      verdict.text = "the message could not be stored";
    }
  }
  if (verdict.accepted()) {
    verdict.status = options_.responseStatus.value_or(verdict.status);
    verdict.text = options_.responseText;
  }
  if (verdict.accepted()) {
    record.messageId = std::to_string(std::time(nullptr)) + "-" +
                       std::to_string(host::processId()) + "-" + std::to_string(++lastMessage_) +
                       "@mmsbrix-relay";
    deliver(record, headerOf);
  }
  record.responseStatus = verdict.status;
  record.text = verdict.text;
  return pduAnswer(encodeSendConf(verdict, record.messageId));
}

void RelayDesk::keep(const RelayExchange& record) {
  const std::lock_guard lock(mutex_);
  kept_.push_back(record);
  while (kept_.size() > options_.keptExchanges) kept_.pop_front();
}

std::vector<RelayExchange> RelayDesk::exchanges() const {
  const std::lock_guard lock(mutex_);
  return {kept_.begin(), kept_.end()};
}

void RelayDesk::tell(const RelayExchange& record) {
  if (!options_.onExchange) return;
  const std::lock_guard lock(callbackMutex_);
  options_.onExchange(record);
}

}  // namespace mmsbrix::tool
