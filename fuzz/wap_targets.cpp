// The engines of the WAP stack under scripts: datagrams, requests of the user, and time.
#include <algorithm>
#include <map>
#include <set>

#include "targets.h"
#include "wapstack/wsp_client.h"
#include "wapstack/wsp_server.h"

namespace mmsbrix::fuzz {
namespace {

using wtp::Duration;
using wtp::TimePoint;

/// Takes an input apart into the steps of a script.
class Script {
 public:
  explicit Script(Input input) : in_(input) {}
  [[nodiscard]] bool ended() const noexcept { return in_.atEnd(); }
  std::uint8_t octet() { return in_.octet().value_or(0); }
  /// Octets behind a length of one octet.
  Input octets() { return in_.take(octet()); }
  std::vector<std::uint8_t> data() {
    const Input view = octets();
    return {view.begin(), view.end()};
  }

 private:
  Reader in_;
};

WdpAddress peerOf(std::uint8_t octet) {
  WdpAddress peer{.octets = {192, 0, 2, 1}, .size = 4, .port = 9201};
  if ((octet & 0x40) != 0) peer.port = 2948;
  return peer;
}

/// Lets so much time pass, with the timers that end in it; returns when it is over.
template <typename Engine, typename Drain>
TimePoint elapse(Engine& engine, TimePoint now, Duration time, Drain drain) {
  const TimePoint end = now + time;
  for (auto at = engine.deadline(); at && *at <= end; at = engine.deadline()) {
    now = std::max(now, *at);
    engine.onTimer(now);
    drain(now);
  }
  return end;
}

/// Lets time pass until no timer runs.
template <typename Engine, typename Drain>
void settle(Engine& engine, TimePoint now, Drain drain) {
  const TimePoint end = now + std::chrono::hours(24);
  while (const auto at = engine.deadline()) {
    now = std::max(now, *at);
    require(now < end, "every exchange comes to an end");
    engine.onTimer(now);
    drain(now);
  }
  require(engine.transactions() == 0, "a transaction without a timer is over");
}

/// An endpoint, and what it owes its user.
class EndpointRun {
 public:
  explicit EndpointRun(const wtp::Settings& settings)
      : limit_(std::max(settings.maxMessage, settings.maxInvoke)), endpoint_(settings, 1) {}

  void invoke(std::uint8_t choice, std::vector<std::uint8_t> data) {
    const wtp::Transaction::Terms terms{static_cast<wtp::Class>(choice % 3), (choice & 0x10) != 0};
    const auto invoked = endpoint_.invoke(peerOf(choice), terms, std::move(data), now_);
    require((invoked.refusal == wtp::Refusal::none) == (invoked.handle != 0) ||
                terms.transactionClass == wtp::Class::push,
            "an invoke that is taken has a handle");
    if (invoked.refusal != wtp::Refusal::none) return;
    require(!over_.contains(invoked.handle), "a handle is never used twice");
    last_ = invoked.handle;
    if (terms.transactionClass != wtp::Class::push) owed_[last_] = terms.transactionClass;
  }
  void step(Script& script) {
    const std::uint8_t verb = script.octet();
    switch (verb & 0x0F) {
      case 0x08:
        endpoint_.respondInvoke(last_, script.octets(), now_);
        break;
      case 0x09:
        endpoint_.sendResult(last_, script.data(), now_);
        break;
      case 0x0A:
        endpoint_.respondResult(last_, script.octets(), now_);
        break;
      case 0x0B:
        if (endpoint_.abandon(last_, verb >> 4, now_) == wtp::Refusal::none) {
          owed_.erase(last_);
          over_.insert(last_);
        }
        break;
      case 0x0C:
        invoke(verb >> 4, script.data());
        break;
      case 0x0D:
        invoke(verb >> 4, std::vector<std::uint8_t>(std::size_t{script.octet()} * 16, 'i'));
        break;
      case 0x0E:
      case 0x0F:
        pass(Duration(250) * script.octet());
        break;
      default:
        receive(peerOf(verb), script.octets());
        return;
    }
    drain();
  }
  void receive(const WdpAddress& peer, Input octets) {
    endpoint_.receive(peer, octets, now_);
    drain();
  }
  void pass(Duration time) {
    now_ = elapse(endpoint_, now_, time, [this](TimePoint now) {
      now_ = now;
      drain();
    });
  }
  void finish() {
    settle(endpoint_, now_, [this](TimePoint now) {
      now_ = now;
      drain();
    });
    require(owed_.empty(), "every invoke ends by an event");
  }
  void drain() {
    while (const auto datagram = endpoint_.takeDatagram()) {
      require(datagram->octets.size() > 0 && datagram->octets.size() <= wtp::kMaxDatagram,
              "datagrams have a size that can travel");
    }
    while (const auto event = endpoint_.takeEvent()) note(*event);
    require((endpoint_.transactions() > 0) == endpoint_.deadline().has_value(),
            "a timer runs as long as there is a transaction, and no longer");
  }

 private:
  void note(const wtp::Event& event) {
    using Kind = wtp::Event::Kind;
    require(!over_.contains(event.handle), "nothing is told of what is over");
    require(event.data.size() <= limit_, "what is delivered has its limit");
    last_ = event.handle;
    const auto owed = owed_.find(event.handle);
    const bool ends = event.kind == Kind::abortIndication || event.kind == Kind::resultIndication ||
                      (event.kind == Kind::invokeConfirm && owed != owed_.end() &&
                       owed->second == wtp::Class::reliablePush);
    if (event.kind == Kind::abortIndication) over_.insert(event.handle);
    if (!ends || owed == owed_.end()) return;
    owed_.erase(owed);
  }

  const std::size_t limit_;
  wtp::Endpoint endpoint_;
  TimePoint now_;
  wtp::Handle last_ = 0;
  std::map<wtp::Handle, wtp::Class> owed_;
  std::set<wtp::Handle> over_;
};

const std::vector<std::uint8_t> kLong(40, 'l');
std::vector<std::uint8_t> text(std::string_view characters) {
  return {characters.begin(), characters.end()};
}

// What has happened before the script begins.
void begin(std::uint8_t state, EndpointRun& run) {
  using namespace std::string_view_literals;
  const auto receive = [&run](std::string_view octets) {
    run.receive(peerOf(0), asOctets(octets));
  };
  switch (state % 8) {
    case 1:  // an invoke waits for its Ack
      run.invoke(1, text("p"));
      break;
    case 2:  // an invoke waits for its result
      run.invoke(2, text("q"));
      break;
    case 3:  // the peer asked for time
      run.invoke(2, text("q"));
      receive("\x18\x80\x01"sv);
      break;
    case 4:  // a large invoke goes out in groups
      run.invoke(2, kLong);
      break;
    case 5:  // a result arrives in packets
      run.invoke(2, text("q"));
      receive("\x14\x80\x01rrrr"sv);
      break;
    case 6:  // an invoke of the peer waits for our result
      receive("\x0A\x00\x05\x02q"sv);
      break;
    case 7:  // an invoke of the peer arrives in packets
      receive("\x08\x00\x05\x02qqqq"sv);
      break;
    default:
      break;
  }
  run.drain();
}

}  // namespace

void wtpDatagrams(Input input) {
  Script script(input);
  const std::uint8_t mode = script.octet();
  wtp::Settings settings;
  settings.acceptClass2 = (mode & 0x80) == 0;
  settings.segmentation = (mode & 0x40) == 0;
  if ((mode & 0x20) == 0) {
    settings.segmentOctets = 4;
    settings.maxMessage = settings.maxInvoke = 64;
  }
  if ((mode & 0x10) != 0) settings.maxGroupSegments = 1;
  EndpointRun run(settings);
  begin(mode, run);
  while (!script.ended()) run.step(script);
  run.finish();
}

void wspSession(Input input) {
  using session::Event;
  using session::Id;
  Script script(input);
  const std::uint8_t mode = script.octet();
  wtp::Settings settings;
  if ((mode & 0x20) == 0) settings.segmentOctets = 8;
  session::Client client(settings, 1);
  TimePoint now;
  std::set<Id> methods;
  std::set<Id> pushes;
  Id lastPush = 0;
  const auto drain = [&](TimePoint at) {
    now = at;
    while (client.takeDatagram()) continue;
    while (const auto event = client.takeEvent()) {
      switch (event->kind) {
        case Event::Kind::methodResultIndication:
          require(methods.contains(event->id), "results are told of methods that are open");
          break;
        case Event::Kind::methodAbortIndication:
          require(methods.erase(event->id) == 1, "a method is aborted once");
          break;
        case Event::Kind::confirmedPushIndication:
          require(pushes.insert(event->id).second, "a push is told of once");
          lastPush = event->id;
          break;
        case Event::Kind::connectConfirm:
          require(client.state() != session::State::connecting,
                  "a connect that is confirmed is over");
          break;
        default:
          break;
      }
    }
  };
  const auto receive = [&](std::string_view octets) {
    client.receive(peerOf(0), asOctets(octets), now);
    drain(now);
  };
  const session::Capabilities proposed{300, 300, std::uint8_t{0xE0}, std::uint8_t{2},
                                       std::uint8_t{1}};
  const auto connect = [&] {
    client.connect(peerOf(0), proposed, {}, now);
    drain(now);
  };
  using namespace std::string_view_literals;
  if (mode % 8 > 0) connect();
  if (mode % 8 > 1) receive("\x16\x80\x01\x02\x07\x07\x02\x03\x80\x82\x2C\x02\x82\xE0\xA6\x00"sv);
  if (mode % 8 > 2) {
    if (client.invokeMethod(1, 0x40, "u", {}, {}, now) == session::Refusal::none) methods.insert(1);
    drain(now);
  }
  if (mode % 8 > 3)
    receive(
        "\x16\x80\x02\x04\x20\x01\xBE"
        "b"sv);
  if (mode % 8 == 5) client.suspend(now);
  drain(now);

  for (Id id = 2; !script.ended(); ++id) {
    const std::uint8_t verb = script.octet();
    switch (verb & 0x0F) {
      case 0x05:
        connect();
        break;
      case 0x06:
        client.disconnect(now);
        break;
      case 0x07:
        client.suspend(now);
        break;
      case 0x08:
        client.resume(peerOf(verb), script.octets(), now);
        break;
      case 0x09:
      case 0x0A: {
        const Input body = script.octets();
        if (client.invokeMethod(id, (verb & 0x80) != 0 ? 0x60 : 0x40, "u", {}, body, now) ==
            session::Refusal::none) {
          methods.insert(id);
        }
        break;
      }
      case 0x0B:
        if (!methods.empty()) {
          const Id method = *methods.begin();
          if (client.respondResult(method, {}, now) == session::Refusal::none) {
            methods.erase(method);
          }
        }
        break;
      case 0x0C:
        if (!methods.empty()) client.abortMethod(*methods.begin(), now);
        break;
      case 0x0D:
        if ((verb & 0x80) != 0) {
          client.respondPush(lastPush, {}, now);
        } else {
          client.abortPush(lastPush, 0xEB, now);
        }
        break;
      case 0x0E:
      case 0x0F:
        now = elapse(client, now, Duration(250) * script.octet(), drain);
        break;
      default:
        client.receive(peerOf(verb), script.octets(), now);
        break;
    }
    drain(now);
  }
  settle(client, now, drain);
}

namespace {

/// A server, and what it owes its user.
class ServerRun {
 public:
  explicit ServerRun(const wtp::Settings& settings) : server_(settings, 1) {}

  void receive(const WdpAddress& peer, Input octets) {
    server_.receive(peer, octets, now_);
    drain();
  }
  void receive(std::string_view octets) { receive(peerOf(0), asOctets(octets)); }
  void accept() {
    server_.accept(session_, {}, now_);
    drain();
  }
  void reply(Input body) {
    server_.reply(method_, 0x20, asOctets(std::string_view("\xBE")), body, now_);
    drain();
  }
  void confirmedPush(Input body) {
    wtp::Handle id = 0;
    const auto headers = asOctets(std::string_view("\xBE"));
    if (server_.confirmedPush(session_, headers, body, id, now_) == session::ServerRefusal::none) {
      require(pushes_.insert(id).second, "each push that is open has a name of its own");
    }
    drain();
  }
  void step(Script& script) {
    const std::uint8_t verb = script.octet();
    switch (verb & 0x0F) {
      case 0x05:
        accept();
        break;
      case 0x06:
        server_.refuse(session_, verb, {}, script.octets(), now_);
        break;
      case 0x07: {
        const WdpAddress elsewhere = peerOf(verb);
        server_.redirect(session_, verb & 0x80U, {&elsewhere, 1}, now_);
        break;
      }
      case 0x08:
        server_.disconnect(session_, session::Reason::disconnect, now_);
        break;
      case 0x09:
        reply(script.octets());
        break;
      case 0x0A:
        server_.abortMethod(method_, verb, now_);
        break;
      case 0x0B:
        server_.push(session_, asOctets(std::string_view("\xBE")), script.octets(), now_);
        break;
      case 0x0C:
        confirmedPush(script.octets());
        break;
      case 0x0D:
        reply(std::vector<std::uint8_t>(std::size_t{script.octet()} * 16, 'r'));
        break;
      case 0x0E:
      case 0x0F:
        pass(Duration(250) * script.octet());
        break;
      default:
        receive(peerOf(verb), script.octets());
        break;
    }
    drain();
  }
  void pass(Duration time) {
    now_ = elapse(server_, now_, time, [this](TimePoint now) {
      now_ = now;
      drain();
    });
  }
  void finish() {
    settle(server_, now_, [this](TimePoint now) {
      now_ = now;
      drain();
    });
    require(methods_.empty() && pushes_.empty(), "every method and every push ends by an event");
  }

 private:
  void drain() {
    using Kind = session::ServerEvent::Kind;
    while (const auto datagram = server_.takeDatagram()) {
      require(datagram->octets.size() <= wtp::kMaxDatagram,
              "datagrams have a size that can travel");
    }
    while (const auto event = server_.takeEvent()) {
      if (event->session != 0) session_ = event->session;
      switch (event->kind) {
        case Kind::methodIndication:
          require(methods_.insert(event->id).second, "a method is told of once");
          method_ = event->id;
          break;
        case Kind::methodConfirm:
        case Kind::methodAbortIndication:
          require(methods_.erase(event->id) == 1, "a method that was told of ends once");
          break;
        case Kind::pushConfirm:
        case Kind::pushAbortIndication:
          require(pushes_.erase(event->id) == 1, "a push ends once");
          break;
        default:
          break;
      }
    }
    require(server_.sessions() <= session::Server::kMaxSessions, "sessions have their limit");
  }

  session::Server server_;
  TimePoint now_;
  session::SessionId session_ = 0;  // those that were told of last
  wtp::Handle method_ = 0;
  std::set<wtp::Handle> methods_;
  std::set<wtp::Handle> pushes_;
};

}  // namespace

void wspServer(Input input) {
  using namespace std::string_view_literals;
  Script script(input);
  const std::uint8_t mode = script.octet();
  wtp::Settings settings;
  if ((mode & 0x20) == 0) settings.segmentOctets = 8;
  if ((mode & 0x40) == 0) settings.maxMessage = settings.maxInvoke = 256;
  ServerRun run(settings);
  // What has happened before: a connect, its answer, a method, its reply; a push; a suspension.
  const unsigned stage = mode % 8;
  if (stage > 0) run.receive("\x0A\x00\x05\x02\x01\x10\x00\x00"sv);
  if (stage > 1) run.accept();
  if (stage > 2) run.receive("\x18\x00\x05"sv);
  if (stage > 3) run.receive("\x0A\x00\x06\x02\x60\x01\x01u\xBEq"sv);
  if (stage == 5 || stage == 6) run.reply(asOctets("r"sv));
  if (stage == 6) run.confirmedPush(asOctets("n"sv));
  if (stage == 7) run.receive("\x0A\x00\x07\x00\x07\x01"sv);
  while (!script.ended()) run.step(script);
  run.finish();
}

}  // namespace mmsbrix::fuzz
