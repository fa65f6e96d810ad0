// Plays one side of WTP exchanges against an endpoint, as text: what the user asks, what comes and
// goes on the wire, what is indicated, how time passes.
#ifndef MMSBRIX_TESTS_WAPSTACK_WTP_SCRIPT_H
#define MMSBRIX_TESTS_WAPSTACK_WTP_SCRIPT_H

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "support/hex.h"
#include "wapstack/wtp.h"

namespace mmsbrix::wtp::test {

using mmsbrix::test::hex;

inline std::string hexText(Octets octets) {
  std::string text;
  for (const std::uint8_t octet : octets) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    if (!text.empty()) text += ' ';
    text += {kDigits[octet >> 4], kDigits[octet & 15]};
  }
  return text;
}

inline std::string describe(const Event& event) {
  constexpr const char* kNames[] = {"invoke.ind", "invoke.cnf", "result.ind", "result.cnf",
                                    "abort.ind"};
  std::string text = kNames[static_cast<int>(event.kind)];
  if (event.kind == Event::Kind::abortIndication) {
    return text + (event.byPeer ? " peer " : " own ") + hexText(std::vector{event.abortReason});
  }
  if (event.kind == Event::Kind::invokeIndication) {
    text += " " + std::to_string(static_cast<int>(event.transactionClass));
    if (event.userAck) text += "u";
  }
  if (!event.data.empty()) text += " '" + std::string(asText(event.data)) + "'";
  return text;
}

/// Plays a script of lines against an engine:
///   < HEX     a datagram comes          > HEX     the next datagram that goes
///   ! TEXT    the next event            +MS       time passes, timers run when they are due
///   idle      nothing is left: no transaction and no timer
///   other lines are requests of the user; "foreign HEX" is a datagram from somebody else
/// Every datagram and event must be asked for before the next thing happens.
template <typename Engine>
class ScriptPlayer {
 public:
  explicit ScriptPlayer(const Settings& settings) : engine_(settings, 1) {}
  virtual ~ScriptPlayer() = default;

  void run(const std::string& script) {
    std::istringstream lines(script);
    for (std::string line; std::getline(lines, line);) {
      line.erase(0, line.find_first_not_of(' '));
      if (line.empty() || line[0] == '#') continue;
      SCOPED_TRACE(line);
      play(line);
    }
    expectNothingLeft();
  }

 protected:
  /// False for a verb that there is not.
  virtual bool request(const std::string& verb, const std::string& rest) = 0;
  virtual std::string describeNext() = 0;

  template <typename Refusal>
  void note(Refusal refusal) {
    if (refusal != Refusal::none) notes_.push_back(std::string("refused ") + refusalText(refusal));
  }

  Engine engine_;
  WdpAddress peer_{.octets = {192, 0, 2, 1}, .size = 4, .port = 9201};
  TimePoint now_;

 private:
  void play(const std::string& line) {
    const std::size_t blank = line.find(' ');
    const std::string verb = line.substr(0, blank);
    const std::string rest = blank == std::string::npos ? "" : line.substr(blank + 1);
    if (verb == ">") {
      const auto sent = engine_.takeDatagram();
      EXPECT_EQ(sent ? hexText(sent->octets.written()) : "nothing", hexText(hex(rest)));
      return;
    }
    if (verb == "!") {
      EXPECT_EQ(nextEvent(), rest);
      return;
    }
    expectNothingLeft();
    if (verb == "idle") {
      EXPECT_EQ(engine_.transactions(), 0u);
      EXPECT_FALSE(engine_.deadline().has_value());
    } else if (verb[0] == '+') {
      pass(Duration(std::stoi(verb.substr(1))));
    } else if (verb == "<") {
      engine_.receive(peer_, hex(rest), now_);
    } else if (verb == "foreign") {
      engine_.receive(WdpAddress{}, hex(rest), now_);
    } else {
      EXPECT_TRUE(request(verb, rest)) << "no such verb";
    }
    // Whatever happened: a transaction that is left has something that ends it.
    EXPECT_EQ(engine_.transactions() > 0, engine_.deadline().has_value());
  }

  std::string nextEvent() {
    if (notes_.empty()) return describeNext();
    const std::string text = notes_.front();
    notes_.erase(notes_.begin());
    return text;
  }
  void pass(Duration time) {
    const TimePoint end = now_ + time;
    for (auto at = engine_.deadline(); at && *at <= end; at = engine_.deadline()) {
      now_ = std::max(now_, *at);
      engine_.onTimer(now_);
    }
    now_ = end;
  }
  void expectNothingLeft() {
    while (const auto sent = engine_.takeDatagram()) {
      ADD_FAILURE() << "sent unasked: " << hexText(sent->octets.written());
    }
    for (std::string event = nextEvent(); event != "nothing"; event = nextEvent()) {
      ADD_FAILURE() << "indicated unasked: " << event;
    }
  }

  std::vector<std::string> notes_;
};

/// Scripts for a WTP endpoint:
///   invoke CLASS[u] HEX | answer [HEX] | result [HEX] | thank [HEX] | abort HEX
class ScriptRun : public ScriptPlayer<Endpoint> {
 public:
  ScriptRun(const Settings& settings, RowCounts* counts) : ScriptPlayer(settings) {
    engine_.countRows(counts);
  }

 private:
  bool request(const std::string& verb, const std::string& rest) override {
    if (verb == "invoke") {
      const bool userAck = rest.size() > 1 && rest[1] == 'u';
      const Transaction::Terms terms{static_cast<Class>(rest[0] - '0'), userAck};
      const Invoked invoked = engine_.invoke(peer_, terms, hex(rest.substr(userAck ? 2 : 1)), now_);
      handle_ = invoked.handle;
      note(invoked.refusal);
    } else if (verb == "answer") {
      note(engine_.respondInvoke(handle_, hex(rest), now_));
    } else if (verb == "result") {
      note(engine_.sendResult(handle_, hex(rest), now_));
    } else if (verb == "thank") {
      note(engine_.respondResult(handle_, hex(rest), now_));
    } else if (verb == "abort") {
      note(engine_.abandon(handle_, hex(rest).at(0), now_));
    } else {
      return false;
    }
    return true;
  }
  std::string describeNext() override {
    const auto event = engine_.takeEvent();
    if (!event) return "nothing";
    if (event->kind == Event::Kind::invokeIndication) handle_ = event->handle;
    return describe(*event);
  }

  Handle handle_ = 0;
};

inline std::string times(int count, const std::string& lines) {
  std::string all;
  for (int i = 0; i < count; ++i) all += lines;
  return all;
}

}  // namespace mmsbrix::wtp::test

#endif  // MMSBRIX_TESTS_WAPSTACK_WTP_SCRIPT_H
