// A client session against a server session over a network that loses, repeats, reorders and
// delays, by seeds.  A seed that fails is printed; WSP_SEED=number runs that one alone,
// WAP_SEEDS=count runs that many.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "wapstack/simulated_network.h"
#include "wapstack/wsp_client.h"
#include "wapstack/wsp_server.h"

namespace mmsbrix::session {
namespace {

using test::Message;

const Message kType = {0xBE};

struct Totals {
  std::size_t methods = 0;
  std::size_t answered = 0;
  std::size_t connects = 0;
  std::size_t connected = 0;
  std::size_t resumed = 0;
  std::size_t pushes = 0;
  std::size_t pushesTaken = 0;
};

/// What the client has asked for and still awaits.
struct Method {
  Message body;
  bool inSession = false;  ///< invoked when the session was open
  bool answered = false;   ///< the result came, the user has not thanked yet
};

class Simulation {
 public:
  Simulation(std::uint64_t seed, Totals& totals) : network_(seed), totals_(totals) {
    peaceful_ = chance(0.3);
    here_.port = 1;
    there_.port = 9201;
    settings_.segmentOctets = number(32, 200);
    settings_.maxGroupSegments = number(1, 16);
    server_ = std::make_unique<Server>(settings_, tid());
    server_->limit({chance(0.5) ? 0u : 3000u, chance(0.5) ? 0u : 3000u,
                    static_cast<std::uint8_t>(chance(0.5) ? 0xF0 : 16 * number(0, 15)),
                    static_cast<std::uint8_t>(number(1, 4)),
                    static_cast<std::uint8_t>(number(1, 2))});
  }

  void run() {
    // A client that is started anew begins its TIDs anywhere, at the address that it had before.
    for (std::size_t runs = number(1, 3); runs > 0; --runs) {
      client_ = std::make_unique<Client>(settings_, tid());
      connect();
      for (std::size_t i = number(3, 25); i > 0; --i) {
        network_.in(number(0, 90000), [this] { act(); });
      }
      pass();
      if (client_->state() != State::null) {
        EXPECT_EQ(client_->disconnect(network_.now()), Refusal::none);
        collect();
        pass();
      }
      EXPECT_EQ(client_->state(), State::null);
      EXPECT_EQ(client_->transactions(), 0u);
      EXPECT_TRUE(open_.empty()) << open_.size() << " methods without an end";
      EXPECT_FALSE(connecting_) << "a connect without an answer";
      EXPECT_FALSE(resuming_) << "a resume without an answer";
    }
    EXPECT_EQ(server_->transactions(), 0u);
  }

 private:
  bool chance(double probability) { return network_.chance(probability); }
  std::size_t number(std::size_t low, std::size_t high) { return network_.number(low, high); }
  std::uint16_t tid() { return static_cast<std::uint16_t>(number(0, 0x7FFF)); }

  void pass() {
    network_.run(
        [this] {
          const auto a = client_->deadline();
          const auto b = server_->deadline();
          return a && b ? std::min(a, b) : a ? a : b;
        },
        [this] {
          client_->onTimer(network_.now());
          server_->onTimer(network_.now());
        },
        [this] { collect(); });
  }
  void collect() {
    for (bool more = true; more;) {
      more = false;
      while (const auto event = client_->takeEvent()) handle(*event), more = true;
      while (const auto event = server_->takeEvent()) handle(*event), more = true;
    }
    while (const auto sent = client_->takeDatagram()) {
      network_.carry(sent->octets.written(), [this](const Message& octets) {
        server_->receive(here_, octets, network_.now());
      });
    }
    while (const auto sent = server_->takeDatagram()) {
      network_.carry(sent->octets.written(), [this](const Message& octets) {
        client_->receive(there_, octets, network_.now());
      });
    }
    EXPECT_EQ(client_->transactions() > 0, client_->deadline().has_value());
  }

  /// What is told apart by content: each has its own eight octets in front.
  Message content(std::size_t octets) { return network_.octets(8 + octets); }

  // The client's user

  void act() {
    const TimePoint now = network_.now();
    const double what = network_.real();
    if (client_->state() == State::null) {
      if (!peaceful_ || chance(0.3)) connect();
    } else if (what < 0.7 || peaceful_) {
      invoke();
    } else if (what < 0.76 && !open_.empty()) {
      const Id id = open_.begin()->first;
      EXPECT_EQ(client_->abortMethod(id, now), Refusal::none);
    } else if (what < 0.84) {
      client_->suspend(now);
    } else if (what < 0.95) {
      if (client_->resume(there_, {}, now) == Refusal::none) resuming_ = true;
    } else {
      client_->disconnect(now);
    }
  }
  void connect() {
    Capabilities proposed;
    if (chance(0.9)) {
      proposed = {chance(0.5) ? 0u : 20000u, chance(0.5) ? 0u : 20000u, std::uint8_t{0xF0},
                  static_cast<std::uint8_t>(number(1, 6)), static_cast<std::uint8_t>(number(1, 3))};
    }
    EXPECT_EQ(client_->connect(there_, proposed, {}, network_.now()), Refusal::none);
    connecting_ = true;
    ++totals_.connects;
  }
  void invoke() {
    const Id id = ++lastId_;
    const Message body = content(number(0, chance(0.2) ? 12000 : 600));
    const Refusal refusal = client_->invokeMethod(id, 0x60, "u", kType, body, network_.now());
    if (refusal != Refusal::none) {
      EXPECT_TRUE(refusal != Refusal::cannotBeSent || body.size() > 8000);
      return;
    }
    ++totals_.methods;
    open_[id] = {body, client_->state() == State::connected};
    invoked_.insert(body);
    EXPECT_LE(open_.size(), agreement_.methodMor);
  }
  void forget(Id id) { EXPECT_EQ(open_.erase(id), 1u) << "an end of what is not open"; }
  void handle(const Event& event) {
    const TimePoint now = network_.now();
    switch (event.kind) {
      case Event::Kind::connectConfirm:
        EXPECT_TRUE(std::exchange(connecting_, false));
        agreement_ = event.agreement;
        ++totals_.connected;
        break;
      case Event::Kind::disconnectIndication:
        connecting_ = resuming_ = false;
        agreement_ = {};
        EXPECT_TRUE(open_.empty()) << "methods outlive their session";
        break;
      case Event::Kind::resumeConfirm:
        EXPECT_TRUE(std::exchange(resuming_, false));
        ++totals_.resumed;
        break;
      case Event::Kind::suspendIndication:
        resuming_ = false;
        EXPECT_TRUE(open_.empty()) << "methods outlive the suspension";
        break;
      case Event::Kind::methodResultIndication: {
        ASSERT_TRUE(open_.contains(event.id));
        Method& method = open_[event.id];
        EXPECT_FALSE(std::exchange(method.answered, true)) << "answered twice";
        const auto expected = replies_.find(method.body);
        ASSERT_TRUE(expected != replies_.end()) << "answered before it was there";
        EXPECT_EQ(event.body, expected->second);
        ++totals_.answered;
        network_.in(chance(0.5) ? 0 : number(0, 9000), [this, id = event.id] {
          if (!open_.contains(id)) return;  // the session ended first
          EXPECT_EQ(client_->respondResult(id, {}, network_.now()), Refusal::none);
          forget(id);
        });
        break;
      }
      case Event::Kind::methodAbortIndication:
        EXPECT_FALSE(network_.lossless() && peaceful_ && open_.contains(event.id) &&
                     open_.at(event.id).inSession)
            << "though nothing was lost and nobody left";
        forget(event.id);
        break;
      case Event::Kind::pushIndication:
        EXPECT_TRUE(pushed_.contains(event.body));
        break;
      case Event::Kind::confirmedPushIndication:
        EXPECT_TRUE(pushed_.contains(event.body));
        EXPECT_TRUE(pushesSeen_.insert(event.body).second) << "a push delivered twice";
        if (chance(0.8)) {
          client_->respondPush(event.id, {}, now);
        } else {
          client_->abortPush(event.id, 0xEB, now);
        }
        break;
      default:
        break;
    }
  }

  // The server's user

  void handle(const ServerEvent& event) {
    const auto soon = [this] { return chance(0.4) ? 0 : number(0, chance(0.1) ? 40000 : 3000); };
    switch (event.kind) {
      case ServerEvent::Kind::connectIndication:
      case ServerEvent::Kind::resumeIndication:
        network_.in(soon(), [this, id = event.session] {
          if (peaceful_ || chance(0.9)) {
            server_->accept(id, {}, network_.now());
            for (std::size_t i = number(0, 4); i > 0; --i) {
              network_.in(number(0, 60000), [this, id] { push(id); });
            }
            if (!peaceful_ && chance(0.1)) {
              network_.in(number(0, 60000), [this, id] {
                server_->disconnect(id, Reason::disconnect, network_.now());
              });
            }
          } else if (chance(0.5) || server_->redirect(id, kRedirectPermanent, {&here_, 1},
                                                      network_.now()) != ServerRefusal::none) {
            server_->refuse(id, 0x45, {}, {}, network_.now());  // a resume is not redirected
          }
        });
        break;
      case ServerEvent::Kind::methodIndication:
        EXPECT_TRUE(invoked_.contains(event.body)) << "a method that nobody invoked";
        EXPECT_FALSE(replies_.contains(event.body)) << "a method delivered twice";
        replies_[event.body] = content(number(0, chance(0.2) ? 2500 : 400));
        network_.in(soon(), [this, id = event.id, body = event.body] {
          if (!peaceful_ && chance(0.05)) {
            server_->abortMethod(id, 0xE4, network_.now());
          } else if (server_->reply(id, 0x20, kType, replies_[body], network_.now()) ==
                     ServerRefusal::largerThanAgreed) {
            replies_[body].resize(8);
            server_->reply(id, 0x20, kType, replies_[body], network_.now());
          }
        });
        break;
      case ServerEvent::Kind::pushConfirm:
        ++totals_.pushesTaken;
        break;
      default:
        break;
    }
  }
  void push(SessionId id) {
    const Message body = content(number(0, 300));
    pushed_.insert(body);
    ++totals_.pushes;
    wtp::Handle handle = 0;
    if (chance(0.5)) {
      server_->push(id, kType, body, network_.now());
    } else {
      server_->confirmedPush(id, kType, body, handle, network_.now());
    }
  }

  test::SimulatedNetwork network_;
  Totals& totals_;
  bool peaceful_ = false;  ///< nobody leaves, suspends or aborts
  wtp::Settings settings_;
  WdpAddress here_;
  WdpAddress there_;
  std::unique_ptr<Client> client_;
  std::unique_ptr<Server> server_;
  Agreement agreement_;
  bool connecting_ = false;
  bool resuming_ = false;
  Id lastId_ = 0;
  std::map<Id, Method> open_;
  std::set<Message> invoked_;
  std::map<Message, Message> replies_;
  std::set<Message> pushed_;
  std::set<Message> pushesSeen_;
};

TEST(WspSimulation, EveryExchangeOfASessionEndsAndDeliversOnceWhatWasSent) {
  Totals totals;
  const bool all = test::forEachSeed(
      "WSP_SEED", 3000, [&totals](std::uint64_t seed) { Simulation(seed, totals).run(); });
  if (!all) return;
  EXPECT_GT(totals.connected * 100, totals.connects * 80);
  EXPECT_GT(totals.answered * 100, totals.methods * 70);
  EXPECT_GT(totals.resumed, 100u);
  EXPECT_GT(totals.pushesTaken * 100, totals.pushes * 10);
  RecordProperty("methods", std::to_string(totals.methods));
  RecordProperty("answered", std::to_string(totals.answered));
}

}  // namespace
}  // namespace mmsbrix::session
