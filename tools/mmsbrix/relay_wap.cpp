#include "relay_wap.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>

namespace mmsbrix::tool {
namespace {

/// What clients are told who are to get no answer.  [WAP-230 table 35, CONGESTION]
constexpr std::uint8_t kCongestion = 0xE4;
/// More than 256 packets of any size that is in use.
constexpr std::size_t kMaxRequestOctets = std::size_t{4} << 20;
/// Losses on loopback are no sign of a slow network.
constexpr std::chrono::milliseconds kRetryInterval{500};

std::string headerOf(const WapRequest& request, const char* name) {
  if (equalsIgnoringCase(name, "Content-Type")) return request.contentType;
  const auto found = std::ranges::find_if(request.headers, [name](const HeaderField& field) {
    return equalsIgnoringCase(field.name, name);
  });
  return found == request.headers.end() ? std::string() : found->value;
}

/// "192.0.2.1" of "192.0.2.1:40000", "::1" of "[::1]:40000".
std::string hostOf(const std::string& peer) {
  std::string host = peer.substr(0, peer.rfind(':'));
  if (host.starts_with('[') && host.ends_with(']')) host = host.substr(1, host.size() - 2);
  return host;
}

}  // namespace

bool RelayWapSide::start(const RelayWap& wap, std::string& error) {
  WapGatewayOptions options;
  options.host = wap.host;
  options.port = wap.port;
  options.redirect = wap.redirect;
  options.redirectPermanent = wap.redirectPermanent;
  options.refuseStatus = wap.refuseStatus;
  options.abortReason = wap.abortReason;
  options.lossPercent = wap.lossPercent;
  options.lossSeed = wap.lossSeed;
  options.retryInterval = kRetryInterval;
  options.maxRequestOctets = kMaxRequestOctets;
  options.limits.serverSduOctets = kMaxRequestOctets;
  options.onRequest = [this](const WapRequest& request) { return answer(request); };
  options.onMethodEnd = [this](std::uint32_t id, bool) { end(id); };
  gateway_ = WapGateway::start(std::move(options), error);
  return gateway_ != nullptr;
}

WapResponse RelayWapSide::answer(const WapRequest& request) {
  RelayExchange record;
  record.overWap = true;
  record.method = request.method;
  record.target = withoutCredentials(request.uri);
  record.asProxy = record.target.find("://") != std::string::npos;
  record.peer = hostOf(request.peer);
  record.userAgent = headerOf(request, "User-Agent");
  record.octets = request.body.size();
  const bool tooLarge = record.octets > options_.maxBodyOctets;
  if (!tooLarge) record.pdu = request.body;
  RelayAnswer answered = desk_.answer(
      record, [&request](const char* name) { return headerOf(request, name); }, tooLarge);

  WapResponse response;
  response.status = answered.httpStatus;
  response.contentType = std::move(answered.contentType);
  response.body = std::move(answered.body);
  response.delay = options_.delay;
  if (answered.extraHeader != nullptr) {
    response.headers.push_back({answered.extraHeader, answered.extraValue});
  }
  if (options_.fault == ReplyFault::closed) response.abortReason = kCongestion;
  open_[request.id] = std::move(record);
  return response;
}

/// An exchange is told of when its client has the answer, so that who hears of it may stop us.
void RelayWapSide::end(std::uint32_t id) {
  const auto found = open_.find(id);
  if (found == open_.end()) return;
  const RelayExchange record = std::move(found->second);
  open_.erase(found);
  desk_.tell(record);
}

}  // namespace mmsbrix::tool
