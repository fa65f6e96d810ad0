// Two WTP endpoints over a network that loses, repeats, reorders and delays, by seeds.  A seed that
// fails is printed; WTP_SEED=number runs that one alone, WAP_SEEDS=count runs that many.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "wapstack/simulated_network.h"
#include "wapstack/wtp.h"

namespace mmsbrix::wtp {
namespace {

using test::Message;
using test::milliseconds;

constexpr std::size_t kSegment = 16;
/// Packets of the messages of a seed; the seed's number picks one.  Large ones tell little that
/// small ones do not, and take long.
constexpr std::size_t kSizes[] = {0,  1,  2,  3,  6, 12,  30, 1,  2,  3,  4, 5,  6,  8,
                                  10, 12, 16, 64, 2, 150, 0,  1,  2,  3,  6, 12, 30, 1,
                                  2,  3,  4,  5,  6, 8,   10, 12, 16, 20, 2, 256};

struct Exchange {
  std::size_t from = 0;
  Class transactionClass = Class::result;
  bool userAck = false;
  Message invoke;
  Message result;
  Handle handle = 0;
  int invokesDelivered = 0;
  int resultsDelivered = 0;
  int ends = 0;  ///< confirms of class 1, results and aborts, at the initiator
  bool aborted = false;
};

struct Totals {
  std::size_t exchanges = 0;
  std::size_t completed = 0;
  std::size_t datagrams = 0;
};

class Simulation {
 public:
  explicit Simulation(std::uint64_t seed) : network_(seed) {
    const std::size_t packets = kSizes[seed % std::size(kSizes)];
    for (std::size_t side = 0; side < 2; ++side) {
      Settings settings;
      settings.segmentOctets = kSegment;
      settings.acceptClass2 = true;
      settings.maxGroupSegments = number(1, 32);
      sides_[side].emplace(settings, static_cast<std::uint16_t>(number(0, 0xFFFF)));
      addresses_[side].port = static_cast<std::uint16_t>(side);
    }
    const std::size_t count = packets > 64 ? 1 : number(1, 4);
    for (std::size_t i = 0; i < count; ++i) exchanges_.push_back(exchange(packets));
  }

  void run(Totals& totals) {
    for (Exchange& exchange : exchanges_) {
      network_.in(number(0, 50), [this, &exchange] {
        exchange.handle = sides_[exchange.from]
                              ->invoke(addresses_[1 - exchange.from],
                                       {exchange.transactionClass, exchange.userAck},
                                       exchange.invoke, network_.now())
                              .handle;
        EXPECT_NE(exchange.handle, 0u);
      });
    }
    network_.run([this] { return nextTimer(); },
                 [this] {
                   for (auto& side : sides_) side->onTimer(network_.now());
                 },
                 [this] { collect(); });
    check(totals);
  }

 private:
  bool chance(double probability) { return network_.chance(probability); }
  std::size_t number(std::size_t low, std::size_t high) { return network_.number(low, high); }

  /// A message that no other exchange has, as far as its size lets it be told apart.
  Message message(std::size_t packets) {
    for (;;) {
      const Message octets = network_.octets(
          packets == 0 ? 0 : number((packets - 1) * kSegment + 1, packets * kSegment));
      if (used_.insert(octets).second) return octets;
      packets = std::max<std::size_t>(packets, 1);
    }
  }
  Exchange exchange(std::size_t packets) {
    Exchange made;
    made.from = number(0, 1);
    made.transactionClass = chance(0.25) ? Class::reliablePush : Class::result;
    made.userAck = chance(0.2);
    made.invoke = message(chance(0.7) ? packets : number(0, packets));
    made.result = message(chance(0.7) ? packets : number(0, packets));
    return made;
  }

  [[nodiscard]] std::optional<TimePoint> nextTimer() const {
    const auto first = sides_[0]->deadline();
    const auto second = sides_[1]->deadline();
    return first && second ? std::min(first, second) : first ? first : second;
  }

  void collect() {
    for (std::size_t side = 0; side < 2; ++side) {
      while (auto datagram = sides_[side]->takeDatagram()) post(1 - side, *datagram);
      while (const auto event = sides_[side]->takeEvent()) handle(side, *event);
      EXPECT_EQ(sides_[side]->transactions() > 0, sides_[side]->deadline().has_value());
    }
  }
  void post(std::size_t to, const Datagram& datagram) {
    EXPECT_EQ(datagram.peer.port, to);
    network_.carry(datagram.octets.written(), [this, to](const Message& octets) {
      sides_[to]->receive(addresses_[1 - to], octets, network_.now());
    });
  }

  void handle(std::size_t side, const Event& event) {
    if (event.kind == Event::Kind::invokeIndication) {
      const auto exchange = std::ranges::find_if(exchanges_, [&](const Exchange& known) {
        return known.from != side && known.invoke == event.data;
      });
      if (exchange == exchanges_.end()) {
        ADD_FAILURE() << "an invoke of " << event.data.size() << " octets that nobody sent";
        return;
      }
      ++exchange->invokesDelivered;
      EXPECT_EQ(event.userAck, exchange->userAck);
      answer(side, event.handle, *exchange);
      return;
    }
    const auto exchange = std::ranges::find_if(exchanges_, [&](const Exchange& known) {
      return known.from == side && known.handle == event.handle;
    });
    if (exchange == exchanges_.end()) return;  // the responder's confirms and aborts
    switch (event.kind) {
      case Event::Kind::invokeConfirm:
        exchange->ends += exchange->transactionClass == Class::reliablePush ? 1 : 0;
        break;
      case Event::Kind::resultIndication:
        ++exchange->ends;
        ++exchange->resultsDelivered;
        EXPECT_TRUE(event.data == exchange->result) << "a result that nobody sent";
        if (exchange->userAck || chance(0.5)) {
          network_.in(chance(0.5) ? 0 : number(0, 3000), [this, side, handle = event.handle] {
            sides_[side]->respondResult(handle, {}, network_.now());
          });
        }
        break;
      default:
        exchange->aborted = true;
        exchange->ends += exchange->resultsDelivered == 0 ? 1 : 0;
        break;
    }
  }
  void answer(std::size_t side, Handle handle, Exchange& exchange) {
    if (exchange.transactionClass == Class::result) {
      network_.in(chance(0.5) ? 0 : number(0, 9000), [this, side, handle, &exchange] {
        sides_[side]->sendResult(handle, exchange.result, network_.now());
      });
    } else if (exchange.userAck || chance(0.5)) {
      network_.in(number(0, 5000), [this, side, handle] {
        sides_[side]->respondInvoke(handle, {}, network_.now());
      });
    }
  }

  void check(Totals& totals) {
    for (const auto& side : sides_) {
      EXPECT_EQ(side->transactions(), 0u);
      EXPECT_FALSE(side->deadline().has_value());
    }
    for (const Exchange& exchange : exchanges_) {
      EXPECT_EQ(exchange.ends, 1);
      EXPECT_LE(exchange.invokesDelivered, 1) << "delivered twice";
      EXPECT_LE(exchange.resultsDelivered, 1) << "delivered twice";
      if (!exchange.aborted) {
        EXPECT_EQ(exchange.invokesDelivered, 1);
        EXPECT_EQ(exchange.resultsDelivered, exchange.transactionClass == Class::result ? 1 : 0);
      }
      EXPECT_FALSE(network_.lossless() && exchange.aborted) << "though nothing was lost";
      ++totals.exchanges;
      totals.completed += exchange.aborted ? 0 : 1;
    }
    totals.datagrams += network_.datagrams();
  }

  test::SimulatedNetwork network_;
  std::array<std::optional<Endpoint>, 2> sides_;
  std::array<WdpAddress, 2> addresses_;
  std::vector<Exchange> exchanges_;
  std::set<Message> used_;
};

TEST(WtpSimulation, EveryExchangeEndsAndDeliversOnceWhatWasSent) {
  Totals totals;
  const bool all = test::forEachSeed(
      "WTP_SEED", 20000, [&totals](std::uint64_t seed) { Simulation(seed).run(totals); });
  if (!all) return;
  // Giving up is right only when nothing gets through for many retries.
  EXPECT_GT(totals.completed * 100, totals.exchanges * 97);
  RecordProperty("exchanges", std::to_string(totals.exchanges));
  RecordProperty("completed", std::to_string(totals.completed));
  RecordProperty("datagrams", std::to_string(totals.datagrams));
}

}  // namespace
}  // namespace mmsbrix::wtp
