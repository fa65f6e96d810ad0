#include "transport/wap_gateway.h"

#include <algorithm>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <exception>
#include <future>
#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <utility>

#include "platform/worker_thread.h"
#include "transport/wap_text.h"
#include "wapstack/wdpsock.h"
#include "wapstack/wsp_server.h"

namespace mmsbrix {
namespace {

using session::Server;
using session::ServerEvent;
using session::ServerRefusal;
using session::SessionId;
using wtp::Handle;
using wtp::TimePoint;
using Clock = std::chrono::steady_clock;

/// Headers of a session that are kept for its requests; connects with more are refused.
constexpr std::size_t kMaxSessionHeaderOctets = 16384;
constexpr unsigned kInternalError = 500;
constexpr unsigned kTooLarge = 413;

wtp::Settings settingsOf(const WapGatewayOptions& options) {
  wtp::Settings settings;
  settings.segmentOctets = options.segmentOctets;
  settings.maxInvoke = options.maxRequestOctets;
  settings.segmentation = options.segmentation;
  if (const auto interval = options.retryInterval; interval.count() > 0) {
    settings.longRetry = settings.groupRetry = settings.shortRetryByUser = interval;
    settings.perKilooctet = wtp::Duration(0);
    settings.nackDelay = std::min(settings.nackDelay, interval / 2);
  }
  return settings;
}

session::Agreement agreementOf(const WapLimits& limits) {
  std::uint8_t facilities = 0;
  if (limits.confirmedPush) facilities |= session::kConfirmedPushFacility;
  if (limits.push) facilities |= session::kPushFacility;
  if (limits.resume) facilities |= session::kResumeFacility;
  if (limits.acknowledgementHeaders) facilities |= session::kAckHeadersFacility;
  return {limits.clientSduOctets, limits.serverSduOctets, facilities, limits.methods,
          limits.pushes};
}

/// The address in "HOST:PORT", without asking a name service for a number.
std::optional<WdpAddress> addressOf(const std::string& hostAndPort, std::string& error) {
  std::error_code failure;
  const auto address = resolveAddress(hostAndPort, failure);
  if (!address) error = hostAndPort + ": " + failure.message();
  return address;
}

std::uint8_t statusOf(unsigned httpStatus) {
  return wspStatus(httpStatus).value_or(*wspStatus(kInternalError));
}

std::uint16_t randomNumber() {
  std::random_device device;
  return static_cast<std::uint16_t>(device());
}

}  // namespace

struct WapGateway::State {
  explicit State(WapGatewayOptions given)
      : options(std::move(given)),
        socket(context),
        timer(context),
        server(settingsOf(options), randomNumber(), 1),
        random(options.lossSeed) {
    server.limit(agreementOf(options.limits));
    std::ranges::sort(options.dropReceived);
    std::ranges::sort(options.dropSent);
  }

  bool open(std::string& error);
  void run() noexcept;
  void stop() noexcept;
  /// Runs a job on the gateway's thread and gives what it gives.
  std::string onThread(const std::function<std::string()>& job);

  void receive(const WdpAddress& peer, Octets datagram);
  void send(const wtp::Datagram& datagram);
  /// Counts and shows a datagram; false for one that is to be dropped.
  bool passes(bool sent, const WdpAddress& peer, Octets datagram);
  void pump();
  void setTimer();
  void onTimer();

  void handle(const ServerEvent& event);
  void answerConnect(const ServerEvent& event);
  void serve(const ServerEvent& event);
  void answer(Handle method, const WapResponse& response);
  std::string push(SessionId session, const WapPush& push, bool confirmed);
  std::string pushTo(const std::string& address, const WapPush& push);
  std::string disconnect(SessionId session);
  [[nodiscard]] SessionId sessionOr(SessionId session) const { return session ? session : newest; }
  void count(std::uint64_t WapGatewayCounters::*counter) {
    const std::lock_guard lock(mutex);
    ++(counters.*counter);
  }

  WapGatewayOptions options;
  asio::io_context context{1};
  WdpSocket socket;
  asio::steady_timer timer;
  Server server;
  std::mt19937 random;
  WdpAddress redirect;
  std::map<SessionId, std::vector<HeaderField>> sessionHeaders;
  SessionId newest = 0;
  std::multimap<TimePoint, std::pair<Handle, WapResponse>> delayed;
  std::uint8_t lastPush = 0;  // identifies pushes without a session
  bool pumping = false;
  mutable std::mutex mutex;  // guards counters
  WapGatewayCounters counters;
  platform::WorkerThread thread;  // the last, so that it ends before what it uses
};

bool WapGateway::State::open(std::string& error) {
  if (!options.redirect.empty()) {
    const auto address = addressOf(options.redirect, error);
    if (!address) return false;
    redirect = *address;
  }
  const auto local = addressOf(options.host + ":" + std::to_string(options.port), error);
  if (!local) return false;
  if (const auto failure = socket.open(*local)) {
    error = "cannot listen on " + options.host + " port " + std::to_string(options.port) + ": " +
            failure.message();
    return false;
  }
  socket.receive([this](const WdpAddress& peer, Octets datagram) { receive(peer, datagram); });
  if (!thread.start([this] { run(); })) {
    error = "no thread can be started";
    return false;
  }
  return true;
}

void WapGateway::State::run() noexcept {
  const auto work = asio::make_work_guard(context);
  while (!context.stopped()) {
    try {
      context.run();
    } catch (...) {  // out of memory, or a trace that throws: one datagram is lost
    }
  }
}

void WapGateway::State::stop() noexcept {
  context.stop();
  thread.finish();
}

std::string WapGateway::State::onThread(const std::function<std::string()>& job) {
  const auto perform = [&] {
    std::string result = job();
    pump();
    return result;
  };
  if (thread.isCurrent()) return perform();
  std::packaged_task<std::string()> task(perform);
  auto result = task.get_future();
  asio::post(context, [&task] { task(); });
  return result.get();
}

bool WapGateway::State::passes(bool sent, const WdpAddress& peer, Octets datagram) {
  const auto& listed = sent ? options.dropSent : options.dropReceived;
  const bool lost = random() % 100 < options.lossPercent;
  WapDatagram shown;
  {
    const std::lock_guard lock(mutex);
    shown.number = sent ? ++counters.datagramsSent : ++counters.datagramsReceived;
    shown.dropped = lost || std::ranges::binary_search(listed, shown.number);
    if (shown.dropped) ++counters.datagramsDropped;
  }
  if (options.onDatagram) {
    shown.sent = sent;
    shown.octets = datagram.data();
    shown.size = datagram.size();
    shown.peer = toString(peer);
    options.onDatagram(shown);
  }
  return !shown.dropped;
}

void WapGateway::State::receive(const WdpAddress& peer, Octets datagram) {
  if (!passes(false, peer, datagram)) return;
  server.receive(peer, datagram, Clock::now());
  pump();
}

void WapGateway::State::send(const wtp::Datagram& datagram) {
  const Octets octets = datagram.octets.written();
  if (passes(true, datagram.peer, octets)) socket.send(datagram.peer, octets);
}

/// Carries out what the server asks for.  A function of the host that pushes comes here again, and
/// leaves it to the call that is under way.
void WapGateway::State::pump() {
  if (std::exchange(pumping, true)) return;
  struct Done {
    bool& pumping;
    ~Done() { pumping = false; }
  } const done{pumping};
  for (;;) {
    if (const auto event = server.takeEvent()) {
      handle(*event);
    } else if (const auto datagram = server.takeDatagram()) {
      send(*datagram);
    } else {
      break;
    }
  }
  setTimer();
}

void WapGateway::State::setTimer() {
  auto due = server.deadline();
  if (!delayed.empty() && (!due || delayed.begin()->first < *due)) due = delayed.begin()->first;
  if (!due) {
    timer.cancel();
    return;
  }
  timer.expires_at(*due);
  timer.async_wait([this](const asio::error_code& error) {
    if (!error) onTimer();
  });
}

void WapGateway::State::onTimer() {
  const TimePoint now = Clock::now();
  while (!delayed.empty() && delayed.begin()->first <= now) {
    const auto [method, response] = std::move(delayed.begin()->second);
    delayed.erase(delayed.begin());
    answer(method, response);
  }
  server.onTimer(now);
  pump();
}

void WapGateway::State::handle(const ServerEvent& event) {
  using Kind = ServerEvent::Kind;
  using Counters = WapGatewayCounters;
  switch (event.kind) {
    case Kind::connectIndication:
      count(&Counters::connects);
      answerConnect(event);
      break;
    case Kind::disconnectIndication:
      if (sessionHeaders.erase(event.session) != 0) count(&Counters::disconnects);
      break;
    case Kind::suspendIndication:
      count(&Counters::suspends);
      break;
    case Kind::resumeIndication:
      count(&Counters::resumes);
      server.accept(event.session, {}, Clock::now());
      break;
    case Kind::methodIndication:
      count(&Counters::methods);
      serve(event);
      break;
    case Kind::methodConfirm:
      count(&Counters::methodsAnswered);
      if (options.onMethodEnd) options.onMethodEnd(event.id, true);
      break;
    case Kind::methodAbortIndication:
      count(&Counters::methodsAborted);
      if (options.onMethodEnd) options.onMethodEnd(event.id, false);
      break;
    case Kind::pushConfirm:
      count(&Counters::pushesConfirmed);
      break;
    case Kind::pushAbortIndication:
      count(&Counters::pushesAborted);
      break;
  }
}

void WapGateway::State::answerConnect(const ServerEvent& event) {
  const TimePoint now = Clock::now();
  unsigned refused = options.refuseStatus;
  if (event.headers.size() > kMaxSessionHeaderOctets) refused = kTooLarge;
  if (options.abortReason != 0) {
    server.disconnect(event.session, static_cast<session::Reason>(options.abortReason), now);
  } else if (refused != 0) {
    const std::string text = "the gateway refuses sessions with " + std::to_string(refused);
    server.refuse(event.session, statusOf(refused), writeTypedHeaders("text/plain", {}),
                  asOctets(text), now);
  } else if (!options.redirect.empty()) {
    server.redirect(event.session,
                    options.redirectPermanent ? session::kRedirectPermanent : std::uint8_t{0},
                    {&redirect, 1}, now);
  } else {
    const EncodedHeaders headers = encodeHeaderBlock(options.sessionHeaders);
    if (server.accept(event.session, headers.octets, now) != ServerRefusal::none) {
      server.disconnect(event.session, session::Reason::congestion, now);
      return;
    }
    sessionHeaders[event.session] =
        decodeHeaderBlock(event.headers.data(), event.headers.size()).fields;
    newest = event.session;
    count(&WapGatewayCounters::sessions);
  }
}

void WapGateway::State::serve(const ServerEvent& event) {
  WapRequest request;
  request.id = event.id;
  request.session = event.session;
  request.peer = toString(event.peer);
  request.code = event.method;
  request.method = methodName(event.method);
  request.uri = event.uri;
  if (event.method >= session::kFirstPostMethod) {
    TypedHeaders read = readTypedHeaders(event.headers);
    request.contentType = std::move(read.contentType);
    request.headers = std::move(read.fields);
  } else {
    request.headers = decodeHeaderBlock(event.headers.data(), event.headers.size()).fields;
  }
  addMissing(sessionHeaders[event.session], request.headers);
  request.body = event.body;

  WapResponse response;
  response.status = kInternalError;
  try {
    if (options.onRequest) response = options.onRequest(request);
  } catch (...) {  // the host's own; its client is told
  }
  if (response.delay.count() > 0) {
    const TimePoint due = Clock::now() + response.delay;
    delayed.emplace(due, std::pair(event.id, std::move(response)));
  } else {
    answer(event.id, response);
  }
}

void WapGateway::State::answer(Handle method, const WapResponse& response) {
  const TimePoint now = Clock::now();
  std::uint8_t reason = response.abortReason;
  if (reason == 0) {
    const ServerRefusal refusal =
        server.reply(method, statusOf(response.status),
                     writeTypedHeaders(response.contentType, response.headers), response.body, now);
    if (refusal == ServerRefusal::none) return;
    reason = static_cast<std::uint8_t>(session::Reason::mruExceeded);
  }
  server.abortMethod(method, reason, now);
}

std::string WapGateway::State::push(SessionId session, const WapPush& push, bool confirmed) {
  const auto headers = writeTypedHeaders(push.contentType, push.headers);
  const TimePoint now = Clock::now();
  Handle unused = 0;
  return refusalText(confirmed
                         ? server.confirmedPush(sessionOr(session), headers, push.body, unused, now)
                         : server.push(sessionOr(session), headers, push.body, now));
}

std::string WapGateway::State::pushTo(const std::string& address, const WapPush& push) {
  std::string error;
  const auto peer = addressOf(address, error);
  if (!peer) return error;
  Writer pdu;
  pdu.octet(lastPush++);
  session::encodePush(session::PduType::push, writeTypedHeaders(push.contentType, push.headers),
                      push.body, pdu);
  if (!passes(true, *peer, pdu.written())) return {};
  const auto failure = socket.send(*peer, pdu.written());
  return failure ? address + ": " + failure.message() : std::string();
}

std::string WapGateway::State::disconnect(SessionId session) {
  const auto refusal =
      server.disconnect(sessionOr(session), session::Reason::disconnect, Clock::now());
  if (sessionHeaders.erase(sessionOr(session)) != 0) count(&WapGatewayCounters::disconnects);
  return refusalText(refusal);
}

std::unique_ptr<WapGateway> WapGateway::start(WapGatewayOptions options, std::string& error) {
  auto state = std::make_unique<State>(std::move(options));
  if (!state->open(error)) return nullptr;
  return std::unique_ptr<WapGateway>(new WapGateway(std::move(state)));
}

WapGateway::WapGateway(std::unique_ptr<State> state) noexcept : state_(std::move(state)) {}

WapGateway::~WapGateway() {
  state_->stop();
}

std::uint16_t WapGateway::port() const noexcept {
  return state_->socket.local().port;
}

std::string WapGateway::address() const {
  return toString(state_->socket.local());
}

WapGatewayCounters WapGateway::counters() const {
  const std::lock_guard lock(state_->mutex);
  return state_->counters;
}

std::string WapGateway::push(std::uint32_t session, const WapPush& push, bool confirmed) {
  return state_->onThread([&] { return state_->push(session, push, confirmed); });
}

std::string WapGateway::pushTo(const std::string& address, const WapPush& push) {
  return state_->onThread([&] { return state_->pushTo(address, push); });
}

std::string WapGateway::disconnect(std::uint32_t session) {
  return state_->onThread([&] { return state_->disconnect(session); });
}

}  // namespace mmsbrix
