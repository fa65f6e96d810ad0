// The state tables, row by row, as scripted exchanges; a row that no script takes fails.
#include "wapstack/wtp_tables.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "wapstack/wtp_script.h"

namespace mmsbrix::wtp::test {
namespace {

struct Script {
  const char* name;
  std::string lines;
  void (*adjust)(Settings&) = nullptr;
};

/// Packets carry four octets, so that short texts are segmented.
Settings settingsOf(const Script& script) {
  Settings settings;
  settings.segmentOctets = 4;
  settings.acceptClass2 = true;
  settings.maxMessage = settings.maxInvoke = 40;
  if (script.adjust != nullptr) script.adjust(settings);
  return settings;
}

// Our own transactions have TID 1, 2, ...; the peer's have 5.
const std::string kInvoke2 = "invoke 2 'q'\n > 0A 00 01 02 'q'\n";
const std::string kInvoke1 = "invoke 1 'p'\n > 0A 00 01 01 'p'\n";
const std::string kFourPackets = "invoke 2 'aaaabbbbccccdd'\n > 0C 00 01 02 'aaaa'\n";
const std::string kLastTwoSent =
    "invoke 2 'aaaabbbbcc'\n > 0C 00 01 02 'aaaa'\n"
    "< 98 80 01 19 00\n > 28 00 01 01 'bbbb'\n > 2A 00 01 02 'cc'\n";
const std::string kResultBegun = kInvoke2 + "< 14 80 01 'rrrr'\n ! invoke.cnf\n > 98 00 01 19 00\n";
const std::string kResultThere = kInvoke2 + "< 12 80 01 'r'\n ! invoke.cnf\n ! result.ind 'r'\n";
const std::string kThanked = kResultThere + "thank\n > 18 00 01\n";

/// A class 1 transaction that succeeds after its TID was asked about.
std::string verified(int tid) {
  const std::string number = hexText(std::vector{static_cast<std::uint8_t>(tid)});
  return "invoke 1 'p'\n > 0A 00 " + number + " 01 'p'\n < 1C 80 " + number + "\n > 1C 00 " +
         number + "\n < 18 80 " + number + "\n ! invoke.cnf\n idle\n";
}

std::vector<Script> initiatorScripts() {
  const std::string gaveUp = "! abort.ind own 08\n idle\n";
  const std::string peerAborts = "< 21 80 01 E8\n ! abort.ind peer E8\n idle\n";
  const std::string userAborts = "abort EA\n > 21 00 01 EA\n idle\n";
  const std::string broken = "< 38 80 01 05\n > 20 00 01 01\n ! abort.ind own 01\n idle\n";
  const std::string silent = " > 20 00 01 08\n" + gaveUp;
  std::vector<Script> scripts = {
      {"class 0 is sent once", "invoke 0 'bye'\n > 0A 00 01 00 'bye'\n idle\n"},
      {"class 1 and its Ack",
       kInvoke1 + "< 98 80 01 09 'i'\n ! invoke.cnf 'i'\n idle\n"
                  "# a Tve for what is over\n < 1C 80 01\n > 20 00 01 02\n"
                  "# and Acks, results and aborts that belong to nothing\n"
                  "< 18 80 01\n < 16 80 01 'r'\n < 38 80 01 00\n < 20 80 01 08\n idle\n"},
      {"class 1 is repeated after its shorter interval",
       kInvoke1 + "+2999\n +1\n > 0B 00 01 01 'p'\n < 19 80 01\n ! invoke.cnf\n idle\n"},
      {"class 1 by the peer's user",
       "invoke 1u 'p'\n > 0A 00 01 11 'p'\n +3999\n +1\n > 0B 00 01 11 'p'\n" + userAborts},
      {"hold-on, result, exit information, repeated Ack",
       kInvoke2 + "< 18 80 01\n ! invoke.cnf\n < 18 80 01\n +60000\n"
                  "< 16 80 01 'r'\n ! result.ind 'r'\n thank 'x'\n > 98 00 01 09 'x'\n"
                  "< 16 80 01 'r'\n < 17 80 01 'r'\n > 99 00 01 09 'x'\n"
                  "< 1C 80 01\n > 20 00 01 02\n +40000\n idle\n"},
      {"nobody thanks for the result", kResultThere + "+3999\n +1\n > 18 00 01\n +40000\n idle\n"},
      {"the user must thank and does not",
       "invoke 2u 'q'\n > 0A 00 01 12 'q'\n < 12 80 01 'r'\n ! invoke.cnf\n ! result.ind 'r'\n"
       "+24000\n < 13 80 01 'r'\n +4000\n" +
           silent},
      {"an unanswered invoke",
       kInvoke2 + times(8, "+5000\n > 0B 00 01 02 'q'\n") + "+5000\n" + gaveUp},
      {"silence after a hold-on Ack",
       kInvoke2 + "< 18 80 01\n ! invoke.cnf\n +119999\n +1\n" + silent},
      {"the whole takes too long", kInvoke2 + "< 18 80 01\n ! invoke.cnf\n" +
                                       times(6, "+99000\n < 18 80 01\n") + "+6000\n" + silent},
      {"Tok, repeated until enough", kInvoke2 + "< 1C 80 01\n > 1C 00 01\n +5000\n > 1D 00 01\n" +
                                         times(6, "< 1C 80 01\n > 1D 00 01\n") +
                                         "< 1C 80 01\n +5000\n" + gaveUp},
      {"a Tve behind a hold-on Ack is answered, and the retries stay at rest",
       kInvoke2 +
           "< 18 80 01\n ! invoke.cnf\n +60000\n < 1C 80 01\n > 1C 00 01\n"
           "+119999\n +1\n" +
           silent},
      {"an answer that comes too late does not change what is repeated",
       kResultThere + "thank 'x'\n > 98 00 01 09 'x'\n thank 'yy'\n"
                      "! refused there is no such transaction in this state\n"
                      "< 17 80 01 'r'\n > 99 00 01 09 'x'\n +40000\n idle\n"},
      {"a peer that asks about TID after TID is told once that they begin anew",
       verified(1) + verified(2) + verified(3) +
           "invoke 1 'p'\n > 0A 00 04 21 'p'\n +3000\n > 0B 00 04 21 'p'\n"
           "# what follows is held until that is verified, save class 0\n"
           "invoke 1 'h'\n invoke 2 'aaaabb'\n invoke 0 'd'\n > 0A 00 07 00 'd'\n"
           "< 18 80 05\n < 1C 80 04\n > 1C 00 04\n +1000\n < 18 80 04\n ! invoke.cnf\n"
           "> 0A 00 05 01 'h'\n > 0C 00 06 02 'aaaa'\n < 1C 80 05\n > 1C 00 05\n"
           "< 18 80 05\n ! invoke.cnf\n abort EA\n ! refused there is no such transaction in "
           "this state\n" +
           times(8, "+3000\n > 0D 00 06 02 'aaaa'\n") + "+3000\n" + gaveUp +
           "# telling it once more would not help\n" + verified(8) +
           "# until it believes\n invoke 1 'p'\n > 0A 00 09 01 'p'\n < 18 80 09\n"
           "! invoke.cnf\n idle\n" +
           verified(10)},
      {"invokes that are held may be taken back",
       verified(1) + verified(2) + verified(3) +
           "invoke 1 'p'\n > 0A 00 04 21 'p'\n invoke 1 'h'\n abort EA\n"
           "# and are let go when the one before them fails\n"
           "invoke 1 'i'\n < 21 80 04 E8\n ! abort.ind peer E8\n > 0A 00 06 01 'i'\n"
           "< 18 80 06\n ! invoke.cnf\n idle\n"},
      {"a negative Ack asks for the whole invoke",
       kInvoke1 +
           "< 38 80 01 00\n > 0B 00 01 01 'p'\n < 38 80 01 01 00\n > 0B 00 01 01 'p'\n"
           "< 38 80 01 01 07\n" +
           userAborts},

      {"groups grow while they get through",
       kFourPackets +
           "< 98 80 01 19 00\n > 28 00 01 01 'bbbb'\n > 2C 00 01 02 'cccc'\n"
           "# an Ack of the group before changes nothing\n < 98 80 01 19 00\n"
           "< 98 80 01 19 02\n > 2A 00 01 03 'dd'\n"
           "< 98 80 01 19 02\n < 98 80 01 19 03\n ! invoke.cnf\n" +
           userAborts},
      {"the end of a group is repeated, then given up",
       kFourPackets + times(8, "+3000\n > 0D 00 01 02 'aaaa'\n") + "+3000\n" + gaveUp},
      {"retries count anew for each group",
       kFourPackets + times(8, "+3000\n > 0D 00 01 02 'aaaa'\n") +
           "< 98 80 01 19 00\n # smaller after the loss\n > 2C 00 01 01 'bbbb'\n" +
           times(8, "+3000\n > 2D 00 01 01 'bbbb'\n") + "+3000\n" + gaveUp},
      {"a negative Ack is served selectively",
       kFourPackets +
           "< 38 80 01 01 00\n > 0D 00 01 02 'aaaa'\n < 18 80 01\n"
           "> 2C 00 01 01 'bbbb'\n < 98 80 01 19 01\n > 28 00 01 02 'cccc'\n"
           "> 2A 00 01 03 'dd'\n < 38 80 01 02 00 02\n > 29 00 01 02 'cccc'\n"
           "< 38 80 01 00\n > 29 00 01 02 'cccc'\n > 2B 00 01 03 'dd'\n" +
           userAborts},
      {"a Tve that acknowledges the group",
       kFourPackets +
           "< 9C 80 01 19 00\n > 1C 00 01\n > 28 00 01 01 'bbbb'\n > 2C 00 01 02 'cccc'\n"
           "+3001\n > 1D 00 01\n > 2D 00 01 02 'cccc'\n"
           "< 9C 80 01 19 00\n > 1D 00 01\n" +
           userAborts},
      {"a Tve before the last group",
       "invoke 2 'aaaabb'\n > 0C 00 01 02 'aaaa'\n < 9C 80 01 19 00\n > 1C 00 01\n"
       "> 2A 00 01 01 'bb'\n +5000\n > 1D 00 01\n > 2B 00 01 01 'bb'\n" +
           userAborts},
      {"a Tve for the last group leaves it open",
       kLastTwoSent + "< 9C 80 01 19 02\n > 1C 00 01\n < 98 80 01 19 02\n ! invoke.cnf\n" +
           userAborts},
      {"the peer wishes pauses and small groups",
       "invoke 2 'aaaabbbbccccddddeeee'\n > 0C 00 01 02 'aaaa'\n"
       "< 98 80 01 99 00 92 03 0A 12 04 04\n +999\n < 38 80 01 00\n < 1C 80 01\n > 1C 00 01\n"
       "+1\n > 2C 00 01 01 'bbbb'\n < 98 80 01 19 01\n > 2C 00 01 02 'cccc'\n"
       "< 98 80 01 19 02\n > 2C 00 01 03 'dddd'\n"
       "< 98 80 01 99 03 12 03 05\n +500\n > 2A 00 01 04 'eeee'\n" +
           userAborts},
      {"a peer without segmentation gets it whole, under a new TID",
       kFourPackets + "< 20 80 01 04\n > 0E 00 02 02 'aaaabbbbccccdd'\n"
                      "< 16 80 02 'r'\n ! invoke.cnf\n ! result.ind 'r'\n thank\n > 18 00 02\n"
                      "+40000\n idle\n"},
      {"the same after the last group",
       kLastTwoSent + "< 20 80 01 04\n > 0E 00 02 02 'aaaabbbbcc'\n"
                      "# but only once\n < 20 80 02 04\n ! abort.ind peer 04\n idle\n"},

      {"a result in groups, out of order and with a hole",
       kResultBegun + "# the Ack was lost\n < 15 80 01 'rrrr'\n > 98 00 01 19 00\n"
                      "< 34 80 01 03 'uuuu'\n < 30 80 01 01 'ssss'\n < 30 80 01 01 'ssss'\n"
                      "+299\n +1\n > 38 00 01 01 02\n < 31 80 01 02 'tttt'\n > 98 00 01 19 03\n"
                      "< 30 80 01 04 'vvvv'\n < 32 80 01 05 'w'\n"
                      "! result.ind 'rrrrssssttttuuuuvvvvw'\n thank\n > 98 00 01 19 05\n"
                      "< 33 80 01 05 'w'\n > 99 00 01 19 05\n +40000\n idle\n"},
      {"the end of a group came, what is before it did not",
       kInvoke2 +
           "< 34 80 01 01 'ssss'\n ! invoke.cnf\n +300\n > 38 00 01 01 00\n"
           "# the end comes again: the negative Ack was lost\n"
           "< 35 80 01 01 'ssss'\n +300\n > 38 00 01 01 00\n" +
           userAborts},
      {"a result that begins without a group end",
       kInvoke2 +
           "< 10 80 01 'rrrr'\n ! invoke.cnf\n < 32 80 01 01 's'\n"
           "! result.ind 'rrrrs'\n < 1C 80 01\n" +
           userAborts},
      {"a result above the limit",
       kInvoke2 + "< 90 80 01 12 02 29 'rrrr'\n > 20 00 01 09\n ! abort.ind own 09\n idle\n"},
      {"a result that grows above the limit",
       kResultBegun + "< 30 80 01 01 '0123456789012345678901234567890123456'\n"
                      "> 20 00 01 09\n ! abort.ind own 09\n idle\n"},
      {"a result falls silent", kResultBegun + "+120000\n" + silent},

      {"packets that do not fit the message are dropped",
       kInvoke2 +
           "< 32 80 01 02 'tttt'\n ! invoke.cnf\n < 30 80 01 03 'past'\n"
           "+300\n > 38 00 01 02 00 01\n < 31 80 01 01 'ssss'\n < 11 80 01 'rrrr'\n"
           "! result.ind 'rrrrsssstttt'\n" +
           userAborts},
      {"answers of the wrong kind or direction are not heard",
       kInvoke1 +
           "< 16 80 01 'r'\n < 0A 80 01 01\n < 18 00 01\n < 1C 00 01\n < 00\n < 18 80\n"
           "< 40 80 02 00\n < 28 00 01 01 's'\n < 36 00 01 00\n"
           "# nor is anybody else, however well he knows the TID\n"
           "foreign 18 80 01\n foreign 21 80 01 E8\n foreign 38 80 01 05\n" +
           userAborts},
      {"requests in the wrong state are refused",
       kInvoke2 +
           "thank\n ! refused there is no such transaction in this state\n"
           "answer\n ! refused there is no such transaction in this state\n"
           "result 'r'\n ! refused there is no such transaction in this state\n" +
           userAborts},
  };
  const std::pair<const char*, std::string> states[] = {
      {"group wait", kFourPackets},       {"result wait", kInvoke2},  {"receiving", kResultBegun},
      {"result resp wait", kResultThere}, {"wait timeout", kThanked},
  };
  for (const auto& [state, begin] : states) {
    scripts.push_back({state, begin + peerAborts});
    scripts.push_back({state, begin + userAborts});
    if (begin != kThanked) scripts.push_back({state, begin + broken});
  }
  scripts.push_back({"groups in all take too long", kFourPackets + "+10\n" + silent,
                     [](Settings& settings) { settings.overallLimit = Duration(10); }});
  return scripts;
}

const std::string kServe1 = "< 0A 00 05 01 'p'\n ! invoke.ind 1 'p'\n";
const std::string kServe2 = "< 0A 00 05 02 'q'\n ! invoke.ind 2 'q'\n";
const std::string kServe2User = "< 0A 00 05 12 'q'\n ! invoke.ind 2u 'q'\n";
const std::string kHeld = kServe2 + "+2000\n > 18 80 05\n";
const std::string kAnswered = kServe2 + "result 'r'\n > 12 80 05 'r'\n";
const std::string kResultGroup = kServe2 + "result 'rrrrssssttttu'\n > 14 80 05 'rrrr'\n";
const std::string kInvokeBegun = "< 0C 00 05 02 'aaaa'\n > 98 80 05 19 00\n";
/// Served a transaction with TID 5 already: the same TID is doubted.
const std::string kSeen5 =
    "< 0A 00 05 01 'p'\n ! invoke.ind 1 'p'\n answer\n > 18 80 05\n +40000\n idle\n";
const std::string kDoubted = kSeen5 + "< 0A 00 05 01 'p'\n > 1C 80 05\n";

std::vector<Script> responderScripts() {
  const std::string gaveUp = "! abort.ind own 08\n idle\n";
  const std::string peerAborts = "< 21 00 05 E8\n ! abort.ind peer E8\n idle\n";
  const std::string userAborts = "abort EA\n > 21 80 05 EA\n idle\n";
  const std::string broken = "< 38 00 05 05\n > 20 80 05 01\n ! abort.ind own 01\n idle\n";
  const std::string silent = " > 20 80 05 08\n" + gaveUp;
  std::vector<Script> scripts = {
      {"class 0, as often as it comes",
       "< 0E 00 05 00 'd'\n ! invoke.ind 0 'd'\n < 0E 00 05 00 'd'\n ! invoke.ind 0 'd'\n idle\n"},
      {"another version", "< 0A 00 05 42 'q'\n > 20 80 05 06\n idle\n"},
      {"the reserved class", "< 0A 00 05 03 'q'\n > 20 80 05 01\n idle\n"},
      {"class 2 not served", "< 0A 00 05 02 'q'\n > 20 80 05 03\n idle\n",
       [](Settings& settings) { settings.acceptClass2 = false; }},
      {"segments not served",
       "< 0C 00 05 01 'q'\n > 20 80 05 04\n idle\n"
       "# own messages are whole and say so\n invoke 1 '0123456'\n > 0E 00 01 01 '0123456'\n"
       "< 18 80 01\n ! invoke.cnf\n",
       [](Settings& settings) { settings.segmentation = false; }},
      {"a broken invoke",
       "< 8A 00 05 02 1A\n > 20 80 05 01\n < 0A 00 05\n > 20 80 05 01\n"
       "< 40 00 05\n < 38 00 05 09\n < A8 00 05 01\n idle\n"},
      {"class 1 answered by the user",
       kServe1 + "answer 'i'\n > 98 80 05 09 'i'\n < 0A 00 05 01 'p'\n"
                 "< 0B 00 05 01 'p'\n > 99 80 05 09 'i'\n < 1D 00 05\n > 99 80 05 09 'i'\n"
                 "< 1C 00 05\n +40000\n idle\n"},
      {"class 1 answered by the timer", kServe1 + "+0\n > 18 80 05\n +40000\n idle\n"},
      {"class 1 whose user is asleep",
       "< 0A 00 05 11 'p'\n ! invoke.ind 1u 'p'\n +6000\n < 0B 00 05 11 'p'\n +1000\n" + silent},
      {"class 2 answered at once",
       kAnswered + "# a late Tok is not the last Ack\n < 1C 00 05\n < 98 00 05 09 'x'\n"
                   "! result.cnf 'x'\n idle\n"},
      {"class 2 held on",
       kHeld + "< 0A 00 05 02 'q'\n < 0B 00 05 02 'q'\n > 19 80 05\n < 1D 00 05\n > 19 80 05\n"
               "result 'r'\n > 12 80 05 'r'\n < 18 00 05\n ! result.cnf\n idle\n"},
      {"class 2 answered, then held on, then served in groups",
       kServe2 + "answer\n +2000\n > 18 80 05\n result 'rrrrs'\n > 14 80 05 'rrrr'\n"
                 "< 98 00 05 19 00\n > 32 80 05 01 's'\n < 98 00 05 19 01\n ! result.cnf\n idle\n"},
      {"exit information does not go with an Ack that only holds on",
       kServe2 + "answer 'i'\n +2000\n > 18 80 05\n" + userAborts},
      {"class 2 whose user is asleep", kServe2User + "+12000\n +2000\n" + silent},
      {"a result that nobody acknowledges",
       kAnswered + times(8, "+7000\n > 13 80 05 'r'\n") + "+7000\n" + gaveUp},
      {"a result in groups",
       kResultGroup +
           "< 98 00 05 19 00\n > 30 80 05 01 'ssss'\n > 34 80 05 02 'tttt'\n"
           "< 38 00 05 01 01\n > 31 80 05 01 'ssss'\n +3001\n > 35 80 05 02 'tttt'\n"
           "< 98 00 05 19 02\n > 32 80 05 03 'u'\n < 38 00 05 01 03\n > 33 80 05 03 'u'\n"
           "< 98 00 05 19 02\n < 98 00 05 19 03\n ! result.cnf\n idle\n"},
      {"a result in groups with pauses",
       kResultGroup +
           "< 98 00 05 99 00 12 03 01\n +100\n > 30 80 05 01 'ssss'\n"
           "> 34 80 05 02 'tttt'\n < 98 00 05 99 02 12 03 01\n +100\n"
           "> 32 80 05 03 'u'\n" +
           userAborts},
      {"a result in groups that nobody acknowledges",
       kResultGroup + times(8, "+3000\n > 15 80 05 'rrrr'\n") + "+3000\n" + gaveUp},
      {"a result in units that the initiator takes",
       "< 8A 00 05 02 12 01 02 'q'\n ! invoke.ind 2 'q'\n result 'rrr'\n > 14 80 05 'rr'\n" +
           userAborts},
      {"a result for one who takes no segments",
       "< 0E 00 05 02 'q'\n ! invoke.ind 2 'q'\n result 'rrrrssss'\n > 16 80 05 'rrrrssss'\n" +
           userAborts},

      {"an invoke in groups, out of order and with a hole",
       kInvokeBegun +
           "< 0D 00 05 02 'aaaa'\n > 98 80 05 19 00\n"
           "< 2C 00 05 02 'cccc'\n +300\n > 38 80 05 01 01\n"
           "< 29 00 05 01 'bbbb'\n > 98 80 05 19 02\n < 28 00 05 03 'dddd'\n"
           "< 2A 00 05 04 'e'\n ! invoke.ind 2 'aaaabbbbccccdddde'\n"
           "+2000\n > 98 80 05 19 04\n" +
           userAborts},
      {"an invoke without group ends",
       "< 08 00 05 01 'aaaa'\n < 2A 00 05 01 'b'\n ! invoke.ind 1 'aaaab'\n answer\n"
       "> 98 80 05 19 01\n +40000\n idle\n"},
      {"an invoke above the limit", "< 88 00 05 02 12 02 29 'aaaa'\n > 20 80 05 09\n idle\n"},
      {"an invoke that grows above the limit",
       kInvokeBegun +
           "< 28 00 05 01 '0123456789012345678901234567890123456'\n > 20 80 05 09\n idle\n"},
      {"an invoke falls silent", kInvokeBegun + "+120000\n > 20 80 05 08\n idle\n"},
      {"an invoke in groups is taken back", kInvokeBegun + "< 21 00 05 E8\n idle\n"},
      {"an invoke in groups breaks", kInvokeBegun + "< 38 00 05 05\n > 20 80 05 01\n idle\n"},

      {"a doubted TID that the peer stands by",
       kDoubted + "< 0A 00 05 01 'p'\n < 0B 00 05 01 'p'\n > 1D 80 05\n"
                  "< 1C 00 05\n ! invoke.ind 1 'p'\n answer\n > 18 80 05\n +40000\n idle\n"
                  "# copies of invoke and Tok that the network kept\n"
                  "< 0A 00 05 01 'p'\n < 1C 00 05\n +79999\n < 0A 00 05 01 'p'\n"
                  "+1\n < 0A 00 05 01 'p'\n > 1C 80 05\n +120000\n idle\n"},
      {"a doubted TID that the peer denies", kDoubted + "< 20 00 05 02\n idle\n"},
      {"a doubted TID, then rubbish", kDoubted + "< 38 00 05 05\n > 20 80 05 01\n idle\n"},
      {"a doubted TID, then silence", kDoubted + "+120000\n idle\n"},
      {"a doubted TID of a group",
       kSeen5 + "< 0C 00 05 01 'aaaa'\n > 9C 80 05 19 00\n < 1C 00 05\n"
                "< 2A 00 05 01 'b'\n ! invoke.ind 1 'aaaab'\n answer\n > 98 80 05 19 01\n"
                "+40000\n idle\n"},
      {"a doubted TID, its group complete later",
       kSeen5 + "< 08 00 05 01 'aaaa'\n < 2C 00 05 01 'bbbb'\n > 9C 80 05 19 01\n"
                "# the rest comes before the Tok\n < 2A 00 05 02 'c'\n < 1C 00 05\n"
                "! invoke.ind 1 'aaaabbbbc'\n answer\n > 98 80 05 19 02\n +40000\n idle\n"},
      {"a doubted TID, its message complete later",
       kSeen5 +
           "< 08 00 05 01 'aaaa'\n < 2A 00 05 01 'b'\n > 9C 80 05 19 01\n"
           "< 1C 00 05\n ! invoke.ind 1 'aaaab'\n answer\n > 98 80 05 19 01\n +40000\n idle\n"},
      {"a doubted TID and too much",
       kSeen5 + "< 0C 00 05 01 'aaaa'\n > 9C 80 05 19 00\n"
                "< 28 00 05 01 '0123456789012345678901234567890123456'\n > 20 80 05 09\n idle\n"},
      {"what the user aborted is not delivered again, though the peer stands by its TID",
       kServe1 + "abort EB\n > 21 80 05 EB\n < 0A 00 05 01 'p'\n < 0B 00 05 01 'p'\n"
                 "< 1C 00 05\n +119999\n < 0B 00 05 01 'p'\n idle\n"},
      {"TIDs within half the space are believed, others not",
       "< 0A 00 05 01\n ! invoke.ind 1\n answer\n > 18 80 05\n"
       "< 0A 40 05 01\n ! invoke.ind 1\n answer\n > 18 C0 05\n"
       "< 0A 00 06 01\n > 1C 80 06\n < 0A 40 05 01\n"
       "< 0A 7F FF 01\n ! invoke.ind 1\n answer\n > 18 FF FF\n"
       "< 0A 00 02 01\n ! invoke.ind 1\n answer\n > 18 80 02\n"
       "< 0A 40 03 01\n > 1C C0 03\n +120000\n idle\n"},
      {"a TID marked as new is verified, though nothing is known of the peer",
       "< 0A 40 00 21\n > 1C C0 00\n < 1C 40 00\n ! invoke.ind 1\n answer\n > 18 C0 00\n"
       "< 0A 40 01 01\n ! invoke.ind 1\n answer\n > 18 C0 01\n +40000\n idle\n"},
      {"a TID marked as new counts once it is verified",
       kSeen5 + "< 0A 40 00 21\n > 1C C0 00\n < 1C 40 00\n ! invoke.ind 1\n answer\n > 18 C0 00\n"
                "< 0A 40 01 01\n ! invoke.ind 1\n answer\n > 18 C0 01\n +40000\n idle\n"},
  };
  const std::pair<const char*, std::string> states[] = {
      {"invoke resp wait", kServe2User},
      {"result wait", kHeld},
      {"group wait", kResultGroup},
      {"result resp wait", kAnswered},
      {"wait timeout", kServe1 + "answer\n > 18 80 05\n"},
  };
  for (const auto& [state, begin] : states) {
    scripts.push_back({state, begin + peerAborts});
    scripts.push_back({state, begin + userAborts});
    if (begin != states[4].second) scripts.push_back({state, begin + broken});
  }
  for (const std::string& begin : {kHeld, kAnswered, kResultGroup}) {
    scripts.push_back({"the whole takes too long", begin + "+2500\n" + silent,
                       [](Settings& settings) { settings.overallLimit = Duration(2500); }});
  }
  return scripts;
}

void expectEveryRow(const std::vector<Script>& scripts, std::span<const Row> table,
                    const std::array<std::uint32_t, RowCounts::kMaxRows> RowCounts::*member) {
  RowCounts counts;
  for (const Script& script : scripts) {
    SCOPED_TRACE(script.name);
    ScriptRun(settingsOf(script), &counts).run(script.lines);
  }
  for (std::size_t i = 0; i < table.size(); ++i) {
    EXPECT_GT((counts.*member)[i], 0u)
        << "row " << i << ": state " << static_cast<int>(table[i].state) << ", trigger "
        << static_cast<int>(table[i].trigger) << ", with " << table[i].with << " is never taken";
  }
}

TEST(WtpTables, EveryInitiatorRowIsTaken) {
  expectEveryRow(initiatorScripts(), initiatorTable(), &RowCounts::initiator);
}

TEST(WtpTables, EveryResponderRowIsTaken) {
  expectEveryRow(responderScripts(), responderTable(), &RowCounts::responder);
}

TEST(WtpEndpoint, SmallPdusForOnePeerTravelTogether) {
  ScriptRun run(Settings{}, nullptr);
  run.run(
      "< 00 05 0A 00 05 11 'p' 05 0E 00 06 00 'd' 04 0A 00 07 01\n"
      "! invoke.ind 1u 'p'\n ! invoke.ind 0 'd'\n ! invoke.ind 1\n"
      "abort EA\n > 21 80 07 EA\n"
      "# an unanswered one and one in a concatenation that breaks off\n"
      "< 00 04 0A 00 09 42 04 0A 00 0A 03 7F 00\n > 00 04 20 80 09 06 04 20 80 0A 01\n");
}

TEST(WtpEndpoint, MessagesThatCannotBeSentAreRefusedBeforehand) {
  Settings settings;
  settings.segmentOctets = 10;
  Endpoint endpoint(settings, 1);
  const WdpAddress peer;
  const auto refusal = [&](Class transactionClass, std::size_t octets) {
    return endpoint.invoke(peer, {transactionClass}, std::vector<std::uint8_t>(octets), {}).refusal;
  };
  EXPECT_EQ(refusal(Class::result, 2560), Refusal::none);
  EXPECT_EQ(refusal(Class::result, 2561), Refusal::tooManySegments);
  EXPECT_EQ(refusal(Class::reliablePush, 2561), Refusal::tooManySegments);
  EXPECT_EQ(refusal(Class::push, 65503), Refusal::none);
  EXPECT_EQ(refusal(Class::push, 65504), Refusal::tooLargeForDatagram);
  EXPECT_STREQ(refusalText(Refusal::tooManySegments), "the message takes more than 256 packets");
}

TEST(WtpEndpoint, TransactionsOfPeersAreLimited) {
  Endpoint endpoint(Settings{}, 1);
  std::size_t served = 0;
  for (std::uint16_t i = 0; i < 2 * kMaxPeerTransactions; ++i) {
    const std::vector<std::uint8_t> invoke = {0x0A, static_cast<std::uint8_t>(i >> 8),
                                              static_cast<std::uint8_t>(i), 0x11};
    endpoint.receive(WdpAddress{}, invoke, {});
    while (endpoint.takeEvent()) ++served;
  }
  EXPECT_EQ(served, kMaxPeerTransactions);
  EXPECT_EQ(endpoint.transactions(), kMaxPeerTransactions);
  // What leaves nothing behind is still heard: it may be the end of a session.
  endpoint.receive(WdpAddress{}, mmsbrix::test::hex("0A 70 00 00 05 07"), {});
  EXPECT_TRUE(endpoint.takeEvent().has_value());
}

TEST(WtpEndpoint, FinishedTransactionsGiveWayToNewOnes) {
  Endpoint endpoint(Settings{}, 1);
  const auto invoke = [&endpoint] {
    return endpoint.invoke(WdpAddress{}, {Class::result}, {}, {}).refusal;
  };
  for (std::size_t i = 0; i < 2 * kMaxOwnTransactions; ++i) {
    ASSERT_EQ(invoke(), Refusal::none);
    const auto sent = endpoint.takeDatagram();
    const Octets octets = sent->octets.written();
    const std::vector<std::uint8_t> result = {0x12, static_cast<std::uint8_t>(octets[1] | 0x80),
                                              octets[2]};
    endpoint.receive(WdpAddress{}, result, {});
    while (const auto event = endpoint.takeEvent()) endpoint.respondResult(event->handle, {}, {});
    while (endpoint.takeDatagram()) continue;
  }
  EXPECT_EQ(endpoint.transactions(), kMaxOwnTransactions);
  // Those that await something do not give way.
  for (std::size_t i = 0; i < kMaxOwnTransactions; ++i) ASSERT_EQ(invoke(), Refusal::none);
  EXPECT_EQ(invoke(), Refusal::tooManyTransactions);
}

}  // namespace
}  // namespace mmsbrix::wtp::test
