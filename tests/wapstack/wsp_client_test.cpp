// The WSP client against a scripted server: the tables row by row, capabilities, limits, addresses.
#include "wapstack/wsp_client.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "wapstack/wtp_script.h"

namespace mmsbrix::session {
namespace {

using wtp::test::hex;
using wtp::test::hexText;
using wtp::test::times;

std::string describe(const Event& event) {
  constexpr const char* kNames[] = {"connected", "disconnected",   "suspended",   "resumed",
                                    "exception", "confirmed",      "result",      "aborted",
                                    "push",      "confirmed-push", "push-aborted"};
  std::string text = kNames[static_cast<int>(event.kind)];
  if (event.id != 0) text += " " + std::to_string(event.id);
  if (event.code != 0) text += " " + hexText(std::vector{event.code});
  for (const WdpAddress& address : event.redirect) {
    text += " " + hexText(Octets(address.octets).first(address.size)) + ":" +
            std::to_string(address.port);
  }
  if (event.kind == Event::Kind::connectConfirm) {
    const Agreement& a = event.agreement;
    text += " " + std::to_string(a.clientSduSize) + "/" + std::to_string(a.serverSduSize) + " " +
            hexText(std::vector{a.protocolOptions, a.methodMor, a.pushMor});
  }
  if (!event.headers.empty()) text += " " + hexText(event.headers);
  if (!event.body.empty()) text += " '" + std::string(asText(event.body)) + "'";
  return text;
}

/// Scripts for a client, in octets of WTP and WSP:
///   connect | disconnect | suspend | resume | get ID HEX | post ID HEX | thank ID [HEX]
///   abort ID | push-thank ID | push-abort ID HEX
/// A connect proposes 300 octets both ways, all facilities, 2 methods and 1 push; "connect plain"
/// proposes nothing.  Get and Post go to the URI "u".
class ClientRun : public wtp::test::ScriptPlayer<Client> {
 public:
  explicit ClientRun(RowCounts* counts) : ScriptPlayer(wtp::Settings{}) {
    engine_.countRows(counts);
  }

 private:
  bool request(const std::string& verb, const std::string& rest) override {
    const std::size_t blank = rest.find(' ');
    const std::string octets = blank == std::string::npos ? "" : rest.substr(blank + 1);
    const auto id = [&rest] { return static_cast<Id>(std::stoul(rest)); };
    if (verb == "connect") {
      Capabilities proposed;
      if (rest != "plain")
        proposed = {300, 300, std::uint8_t{0xF0}, std::uint8_t{2}, std::uint8_t{1}};
      note(engine_.connect(peer_, proposed, hex("80 80"), now_));
    } else if (verb == "disconnect") {
      note(engine_.disconnect(now_));
    } else if (verb == "suspend") {
      note(engine_.suspend(now_));
    } else if (verb == "resume") {
      note(engine_.resume(peer_, hex("80 80"), now_));
    } else if (verb == "get") {
      note(engine_.invokeMethod(id(), 0x40, "u", hex(octets), {}, now_));
    } else if (verb == "post") {
      note(engine_.invokeMethod(id(), 0x60, "u", hex("BE"), hex(octets), now_));
    } else if (verb == "thank") {
      note(engine_.respondResult(id(), hex(octets), now_));
    } else if (verb == "abort") {
      note(engine_.abortMethod(id(), now_));
    } else if (verb == "push-thank") {
      note(engine_.respondPush(id(), hex(octets), now_));
    } else if (verb == "push-abort") {
      note(engine_.abortPush(id(), hex(octets).at(0), now_));
    } else {
      return false;
    }
    return true;
  }
  std::string describeNext() override {
    const auto event = engine_.takeEvent();
    return event ? describe(*event) : "nothing";
  }
};

// Connect: version 1.0, 16 octets of capabilities, 2 of headers.
const std::string kConnect =
    "connect\n > 0A 00 01 02 01 10 11 02 03 80 82 2C 03 81 82 2C 02 82 F0 02 83 02 02 84 01 80 "
    "80\n";
const std::string kConnectPlain = "connect plain\n > 0A 00 01 02 01 10 00 02 80 80\n";
const std::string kAck1 = "> 18 00 01\n";
// ConnectReply: session 7, nothing changed, one header.
const std::string kConnected =
    kConnect + "< 16 80 01 02 07 00 02 A6 00\n " + kAck1 + " ! connected 300/300 F0 02 01 A6 00\n";
const std::string kPlain =
    kConnectPlain + "< 16 80 01 02 07 00 00\n " + kAck1 + " ! connected 1400/1400 00 01 01\n";
const std::string kGet1 = "get 1\n > 0A 00 02 02 40 01 'u'\n";
const std::string kGot1 =
    kGet1 + "< 16 80 02 04 20 01 BE 'b'\n ! confirmed 1\n ! result 1 20 BE 'b'\n";
const std::string kSuspended = kConnected + "suspend\n > 0A 00 02 00 08 07\n ! suspended EA\n";
const std::string kResuming = kSuspended + "resume\n > 0A 00 03 02 09 07 00 80 80\n";
const std::string kConfirmedPush = "< 0A 00 05 11 07 01 BE 'n'\n";
const std::string kServerLeaves = "< 0E 00 06 00 05 07\n";
const std::string kBig = std::string("'") + std::string(301, 'x') + "'";

struct Script {
  const char* name;
  std::string lines;
};

std::vector<Script> scripts() {
  const std::string over = "+200000\n idle\n";
  return {
      {"connect, post, get, disconnect",
       kConnected +
           "connect\n ! refused not in this state of the session\n"
           "post 1 'mms'\n > 0A 00 02 02 60 01 01 'u' BE 'mms'\n"
           "< 18 80 02\n ! confirmed 1\n"
           "get 2 83 02\n > 0A 00 03 02 40 01 'u' 83 02\n"
           "get 3\n ! refused as many methods are open as the server allows\n"
           "< 16 80 03 04 44 01 83\n ! confirmed 2\n ! result 2 44 83\n"
           "thank 2 'k'\n > 98 00 03 09 'k'\n thank 2\n ! refused not in this state of the "
           "session\n"
           "< 16 80 02 04 20 01 BE 'conf'\n ! result 1 20 BE 'conf'\n thank 1\n > 18 00 02\n"
           "disconnect\n > 0A 00 04 00 05 07\n ! disconnected EA\n"
           "disconnect\n ! refused not in this state of the session\n" +
           over},
      {"redirect", kConnect + "< 16 80 01 03 80 04 C0 00 02 02 44 C3 50 C0 00 02 03\n " + kAck1 +
                       " ! disconnected 31 C0 00 02 02:9201 C0 00 02 03:50000\n" + over},
      {"redirect for this time, to nowhere",
       kConnect + "< 16 80 01 03 40\n " + kAck1 + " ! disconnected 32\n" + over},
      {"refused by a Reply",
       kConnect + "< 16 80 01 04 45 01 83 'no'\n " + kAck1 + " ! disconnected 45 83 'no'\n" + over},
      {"no answer", kConnectPlain + times(8, "+5001\n > 0B 00 01 02 01 10 00 02 80 80\n") +
                        "+5001\n ! disconnected E9\n " + over},
      {"aborted by the server", kConnect + "< 21 80 01 E4\n ! disconnected E4\n " + over},
      {"a reply that is too large",
       kConnect + "< 16 80 01 " + kBig + "\n > 21 00 01 E6\n ! disconnected E6\n " + over},
      {"a reply that is none",
       kConnect + "< 16 80 01 02 07 05\n > 21 00 01 E0\n ! disconnected E0\n " + over},
      {"the server answers with more than was proposed",
       kConnect +
           "< 16 80 01 02 07 03 00 02 83 03\n > 00 03 18 00 01 06 0A 00 02 00 05 07\n"
           "! disconnected E0\n" +
           over},
      {"the user leaves before the answer",
       kConnect + "disconnect\n > 21 00 01 E1\n ! disconnected EA\n " + over},
      {"a method beside the Connect, answered too early",
       kConnect +
           "get 1\n > 0A 00 02 02 40 01 'u'\n < 18 80 02\n > 21 00 02 E0\n ! aborted 1 E0\n"
           "get 2\n > 0A 00 03 02 40 01 'u'\n < 21 80 03 E1\n ! aborted 2 E1\n"
           "get 3\n > 0A 00 04 02 40 01 'u'\n < 21 80 01 E4\n > 21 00 04 E5\n"
           "! aborted 3 E5\n ! disconnected E4\n " +
           over},
      {"pushes without a session",
       kConfirmedPush +
           "> 21 80 05 E1\n < 0A 00 06 11 00\n > 21 80 06 E1\n < 0A 00 07 00 06 00\n " + over},
      {"pushes while connecting", kConnect + kConfirmedPush +
                                      "> 21 80 05 E0\n < 0A 00 06 11 00\n > 21 80 06 E0\n"
                                      "disconnect\n > 21 00 01 E1\n ! disconnected EA\n " +
                                      over},

      {"requests that the server would not take are refused here",
       kConnected + "post 1 " + kBig +
           "\n ! refused the request is larger than the server accepts\n"
           "get 1\n > 0A 00 02 02 40 01 'u'\n get 1\n ! refused not in this state of the session\n"
           "disconnect\n > 00 04 21 00 02 E1 06 0A 00 03 00 05 07\n ! aborted 1 E1\n ! "
           "disconnected EA\n " +
           over},
      {"facilities that were not agreed on",
       kPlain +
           "suspend\n ! refused not in this state of the session\n"
           "resume\n ! refused not in this state of the session\n < 0A 00 08 00 06 01 BE 'n'\n" +
           kConfirmedPush + "> 21 80 05 E0\n" + kGet1 +
           "< 21 80 02 E2\n ! aborted 1 E1\n ! disconnected E2\n" + over},
      {"method results that are none",
       kConnected + kGet1 + "< 16 80 02 04 20 " + kBig +
           "\n ! confirmed 1\n > 21 00 02 E6\n ! aborted 1 E6\n"
           "get 2\n > 0A 00 03 02 40 01 'u'\n < 16 80 03 03 00\n ! confirmed 2\n > 21 00 03 E0\n"
           "! aborted 2 E0\n get 3\n > 0A 00 04 02 40 01 'u'\n < 16 80 04 04 20 09\n"
           "! confirmed 3\n > 21 00 04 E0\n ! aborted 3 E0\n" +
           kServerLeaves + "! disconnected E1\n" + over},
      {"methods aborted by the user",
       kConnected + kGet1 +
           "abort 1\n > 21 00 02 E8\n ! aborted 1 EA\n"
           "get 2\n > 0A 00 03 02 40 01 'u'\n < 18 80 03\n ! confirmed 2\n abort 2\n > 21 00 03 "
           "E8\n"
           "! aborted 2 EA\n get 3\n > 0A 00 04 02 40 01 'u'\n < 16 80 04 04 20 00\n ! confirmed "
           "3\n"
           "! result 3 20\n abort 3\n > 21 00 04 E8\n ! aborted 3 EA\n"
           "abort 3\n ! refused not in this state of the session\n" +
           over},
      {"methods aborted by the server",
       kConnected + kGot1 +
           "< 21 80 02 E9\n ! aborted 1 E9\n get 2\n > 0A 00 03 02 40 01 'u'\n"
           "< 18 80 03\n ! confirmed 2\n < 20 80 03 07\n ! aborted 2 E4\n"
           "get 3\n > 0A 00 04 02 40 01 'u'\n < 20 80 04 09\n ! aborted 3 E6\n" +
           over},
      {"TIDs that the server asks about: Tok while a method is open, never for one that is over",
       kConnectPlain + "< 1C 80 01\n > 1C 00 01\n < 16 80 01 02 07 00 00\n " + kAck1 +
           " ! connected 1400/1400 00 01 01\n" + kGet1 +
           "< 1C 80 02\n > 1C 00 02\n +5000\n > 1D 00 02\n < 18 80 02\n ! confirmed 1\n"
           "< 1C 80 02\n > 1C 00 02\n < 16 80 02 04 20 00\n ! result 1 20\n thank 1\n > 18 00 02\n"
           "# a late copy of what was answered: an Abort would end what the server has served\n"
           "< 1C 80 02\n +40000\n < 1C 80 02\n > 20 00 02 02\n"
           "get 2\n > 0A 00 03 02 40 01 'u'\n < 16 80 03 04 20 00\n ! confirmed 2\n ! result 2 20\n"
           "thank 2\n > 18 00 03\n < 1C 80 03\n > 20 00 03 02\n"
           "disconnect\n > 0A 00 04 00 05 07\n ! disconnected EA\n" +
           over},
      {"one method is aborted while the other goes on",
       kConnected +
           "get 1\n > 0A 00 02 02 40 01 'u'\n get 2\n > 0A 00 03 02 40 01 'u'\n"
           "abort 1\n > 21 00 02 E8\n ! aborted 1 EA\n < 16 80 02 04 20 00\n"
           "get 3\n > 0A 00 04 02 40 01 'u'\n < 16 80 04 04 20 00\n ! confirmed 3\n ! result 3 20\n"
           "get 4\n ! refused as many methods are open as the server allows\n"
           "< 16 80 03 04 20 00\n ! confirmed 2\n ! result 2 20\n thank 2\n > 18 00 03\n"
           "thank 3\n > 18 00 04\n disconnect\n > 0A 00 05 00 05 07\n ! disconnected EA\n" +
           over},
      {"acknowledgement headers are not sent where the server does not want them",
       kConnect + "< 16 80 01 02 07 03 00 02 82 E0\n " + kAck1 + " ! connected 300/300 E0 02 01\n" +
           kGot1 + "thank 1 'k'\n > 18 00 02\n" + kConfirmedPush +
           "! confirmed-push 1 BE 'n'\n push-thank 1 'k'\n > 18 80 05\n" + kServerLeaves +
           "! disconnected E1\n" + over},
      {"acknowledgement headers have a limit",
       kConnected + kGot1 + "thank 1 " + kBig +
           "\n ! refused the acknowledgement headers are longer than 255 octets\n"
           "thank 1 'k'\n > 98 00 02 09 'k'\n" +
           kConfirmedPush + "! confirmed-push 1 BE 'n'\n push-thank 1 " + kBig +
           "\n ! refused the acknowledgement headers are longer than 255 octets\n"
           "push-thank 1 'k'\n > 98 80 05 09 'k'\n" +
           kServerLeaves + "! disconnected E1\n" + over},
      {"a session that the server has forgotten",
       kConnected +
           "get 1\n > 0A 00 02 02 40 01 'u'\n get 2\n > 0A 00 03 02 40 01 'u'\n"
           "< 21 80 02 E1\n > 21 00 03 E1\n ! aborted 1 E1\n ! aborted 2 E1\n ! disconnected "
           "E1\n " +
           over},
      {"the server leaves during a method and a push",
       kConnected + kGet1 + kConfirmedPush + "! confirmed-push 1 BE 'n'\n" + kServerLeaves +
           "> 00 04 21 00 02 E1 04 21 80 05 E1\n ! aborted 1 E1\n ! push-aborted 1 E1\n ! "
           "disconnected E1\n" +
           over},
      {"pushes",
       kConnected + "< 0A 00 08 00 06 01 BE 'n'\n ! push BE 'n'\n" + kConfirmedPush +
           "! confirmed-push 1 BE 'n'\n < 0A 00 09 11 07 01 BE 'm'\n > 21 80 09 E7\n"
           "push-thank 1\n > 18 80 05\n push-thank 1\n ! refused not in this state of the session\n"
           "< 0A 00 0A 11 07 01 BE 'm'\n ! confirmed-push 2 BE 'm'\n push-abort 2 EE\n > 21 80 0A "
           "EE\n"
           "! push-aborted 2 EA\n < 0A 00 0B 11 07 01 BE 'o'\n ! confirmed-push 3 BE 'o'\n"
           "< 21 00 0B E9\n ! push-aborted 3 E9\n"
           "push-abort 3 EE\n ! refused not in this state of the session\n" +
           over},
      {"invokes that are no PDU, too large, from a stranger or of another session",
       kConnected +
           "< 0A 00 08 00 06 09\n ! exception E0\n < 0A 00 09 11 02\n > 21 80 09 E0\n ! exception "
           "E0\n"
           "< 0A 00 0A 00 06 01 BE " +
           kBig + "\n < 0A 00 0B 11 07 01 BE " + kBig +
           "\n > 21 80 0B E6\n foreign 0A 00 05 11 07 01 BE 'n'\n > 21 80 05 E1\n"
           "foreign 0A 00 06 00 05 07\n < 0E 00 06 00 05 08\n"
           "disconnect\n > 0A 00 02 00 05 07\n ! disconnected EA\n" +
           over},

      {"suspended and resumed",
       kConnected + kGet1 +
           "suspend\n > 00 04 21 00 02 E2 06 0A 00 03 00 08 07\n ! aborted 1 E2\n"
           "! suspended EA\n get 1\n ! refused not in this state of the session\n"
           "resume\n > 0A 00 04 02 09 07 00 80 80\n get 1\n > 0A 00 05 02 40 01 'u'\n"
           "< 16 80 04 04 20 02 A6 00\n > 18 00 04\n ! resumed A6 00\n"
           "< 21 80 05 E2\n ! aborted 1 E2\n ! suspended E2\n"
           "disconnect\n ! disconnected EA\n" +
           over},
      {"resumed at once",
       kConnected + kGet1 +
           "resume\n > 00 04 21 00 02 EA 09 0A 00 03 02 09 07 00 80 80\n"
           "! aborted 1 EA\n suspend\n > 00 04 21 00 03 E2 06 0A 00 04 00 08 07\n"
           "! suspended EA\n" +
           kServerLeaves + "! disconnected E1\n" + over},
      {"while suspended",
       kSuspended + kConfirmedPush + "> 21 80 05 E2\n < 0A 00 07 11 00\n > 21 80 07 E0\n " + over},
      {"resume refused",
       kResuming + "< 16 80 03 04 44 00\n > 18 00 03\n ! disconnected 44\n" + over},
      {"resume answered too largely",
       kResuming + "< 16 80 03 04 20 " + kBig + "\n > 21 00 03 E6\n ! suspended E6\n " + over},
      {"resume answered by something else",
       kResuming + "< 16 80 03 02 07 00 00\n > 21 00 03 E0\n ! suspended E0\n " + over},
      {"the session is gone", kResuming + "< 21 80 03 E1\n ! disconnected E1\n " + over},
      {"resume aborted", kResuming + "< 21 80 03 E4\n ! suspended E4\n " + over},
      {"a method beside the Resume is told first",
       kResuming +
           "get 1\n > 0A 00 04 02 40 01 'u'\n < 21 80 04 E1\n > 21 00 03 E1\n ! aborted 1 E1\n"
           "! disconnected E1\n " +
           over},
      {"the same, suspended",
       kResuming +
           "get 1\n > 0A 00 04 02 40 01 'u'\n < 21 80 04 E2\n > 21 00 03 E2\n ! aborted 1 E2\n"
           "! suspended E2\n " +
           over},
      {"the server leaves while resuming",
       kResuming + kServerLeaves + "> 21 00 03 E1\n ! disconnected E1\n " + over},
      {"the user leaves while resuming",
       kResuming + kConfirmedPush +
           "> 21 80 05 E0\n < 0A 00 07 11 00\n > 21 80 07 E0\n"
           "disconnect\n > 00 04 21 00 03 E1 06 0A 00 04 00 05 07\n ! disconnected EA\n " +
           over}};
}

template <std::size_t N>
void expectEveryRow(const char* name, std::span<const Row> table,
                    const std::array<std::uint32_t, N>& counts) {
  for (std::size_t i = 0; i < table.size(); ++i) {
    EXPECT_GT(counts[i], 0u) << name << " row " << i << ": state "
                             << static_cast<int>(table[i].state) << ", trigger "
                             << static_cast<int>(table[i].trigger) << " is never taken";
  }
}

TEST(WspClient, EveryRowIsTaken) {
  RowCounts counts;
  for (const Script& script : scripts()) {
    SCOPED_TRACE(script.name);
    ClientRun(&counts).run(script.lines);
  }
  expectEveryRow("session", sessionTable(), counts.session);
  expectEveryRow("method", methodTable(), counts.method);
  expectEveryRow("push", pushTable(), counts.push);
}

/// A client whose session is open, under what the server answered.
std::unique_ptr<Client> connected(const Capabilities& proposed, const char* answer) {
  auto client = std::make_unique<Client>(wtp::Settings{}, std::uint16_t{1});
  client->connect({}, proposed, {}, {});
  const auto capabilities = hex(answer);
  auto reply = hex("16 80 01 02 07");
  reply.push_back(static_cast<std::uint8_t>(capabilities.size()));
  reply.push_back(0);
  reply.insert(reply.end(), capabilities.begin(), capabilities.end());
  client->receive({}, reply, {});
  EXPECT_EQ(client->state(), State::connected);
  return client;
}

TEST(WspClient, TheServerSduSizeCountsTheWholePdu) {
  struct Case {
    std::optional<std::uint32_t> proposed;
    const char* answer;
    std::size_t largest;  ///< body that is taken, with 5 octets before it
  };
  const Case cases[] = {{std::nullopt, "", 1395},         // the default
                        {300, "", 295},                   // as proposed
                        {30000, "03 81 A7 10", 5003},     // less than proposed
                        {30000, "01 81", 1395},           // not understood
                        {0, "02 81 00", 256 * 1400 - 5},  // no limit: as many packets as there are
                        {400000, "04 81 98 B5 00", 256 * 1400 - 5}};
  for (const Case& test : cases) {
    SCOPED_TRACE(test.answer);
    const auto client = connected({.serverSduSize = test.proposed}, test.answer);
    const auto post = [&client](std::size_t octets) {
      const std::vector<std::uint8_t> body(octets);
      return client->invokeMethod(1, 0x60, "u", hex("BE"), body, {});
    };
    const bool unlimited = test.largest > 30000;
    EXPECT_EQ(post(test.largest + 1),
              unlimited ? Refusal::cannotBeSent : Refusal::largerThanAgreed);
    EXPECT_EQ(post(test.largest), Refusal::none);
  }
  Client client(wtp::Settings{}, 1);
  client.connect({}, {}, std::vector<std::uint8_t>(256 * 1400), {});
  EXPECT_EQ(describe(client.takeEvent().value()), "disconnected E6");
  EXPECT_EQ(client.state(), State::null);
}

TEST(WspClient, MethodsBeyondTheStandardsMustBeAgreedOn) {
  const Capabilities proposed{.methodMor = std::uint8_t{9},
                              .extendedMethods = {{{0x50, "LOOK"}, {0x70, "KEEP"}}}};
  const auto invoked = [](Client& client, std::initializer_list<std::uint8_t> methods) {
    std::string text;
    for (const std::uint8_t method : methods) {
      const Refusal refusal = client.invokeMethod(method, method, "u", {}, {}, {});
      text += refusal == Refusal::none ? "+" : refusal == Refusal::unknownMethod ? "-" : "?";
    }
    return text;
  };
  EXPECT_EQ(invoked(*connected(proposed, "02 85 70"), {0x50, 0x70, 0x44, 0x61, 0x45, 5}), "-+++--");
  EXPECT_EQ(invoked(*connected(proposed, "01 85"), {0x50, 0x70}), "--");
  EXPECT_EQ(invoked(*connected(proposed, ""), {0x50, 0x70, 0x51}), "++-");
  EXPECT_EQ(invoked(*connected({}, "02 85 70"), {0x70}), "-");  // not asked for
}

TEST(WspCapabilities, AreWrittenInOrderAndReadBack) {
  Capabilities all{300000, 0, std::uint8_t{0xB0}, std::uint8_t{2}, std::uint8_t{1}};
  all.clientMessageSize = 0;
  all.serverMessageSize = 2000;
  all.extendedMethods = {{0x50, "LOOK"}};
  all.headerCodePages = {{0x10, "x"}, {0x11, "y"}};
  all.aliases = {{.octets = {192, 0, 2, 1}, .size = 4, .port = 50000}};
  Writer out;
  encodeCapabilities(all, out);
  EXPECT_EQ(
      hexText(out.written()),
      hexText(hex("04 80 92 A7 60 02 81 00 02 82 B0 02 83 02 02 84 01 02 88 00 03 89 8F 50"
                  "07 85 50 'LOOK' 00 07 86 10 'x' 00 11 'y' 00 08 87 44 C3 50 C0 00 02 01")));
  // An answer has the codes alone.
  const auto answer = decodeCapabilities(hex("02 88 00 03 89 87 68 01 85 02 86 11 05 87 04 C0 00"));
  EXPECT_FALSE(answer.has_value()) << "the last one is cut off";
  const auto agreed = agree(all, *decodeCapabilities(hex("02 88 00 03 89 87 68 01 85 02 86 11")));
  ASSERT_TRUE(agreed.has_value());
  EXPECT_EQ(agreed->clientMessageSize, 0u);
  EXPECT_EQ(agreed->serverMessageSize, 1000u);
  EXPECT_TRUE(agreed->extendedMethods.empty());
  EXPECT_EQ(agreed->headerCodePages, std::vector<std::uint8_t>{0x11});
}

TEST(WspCapabilities, AServerThatDoesNotUnderstandKeepsToTheDefault) {
  // Below the default, too: it is no answer above the proposal.
  const Capabilities proposed{300, 300, std::nullopt, std::uint8_t{0}, std::nullopt};
  const auto agreed = agree(proposed, *decodeCapabilities(hex("01 80 01 81 01 83")));
  ASSERT_TRUE(agreed.has_value());
  EXPECT_EQ(agreed->clientSduSize, 1400u);
  EXPECT_EQ(agreed->serverSduSize, 1400u);
  EXPECT_EQ(agreed->methodMor, 1u);
  EXPECT_FALSE(agree(proposed, *decodeCapabilities(hex("03 80 8A 78"))).has_value());
}

TEST(WspCapabilities, AnswersAreHeldAgainstTheProposal) {
  struct Case {
    const char* answer;
    const char* agreed;  ///< sizes, options, methods, pushes; nothing when the session fails
  };
  // Proposed: client size 300000, server size 0 (no limit), options A0, 4 methods, pushes as usual.
  const Case cases[] = {
      {"", "300000/0 A0 04 01"},
      {"04 80 92 A7 60 02 81 00 02 82 20 02 83 02", "300000/0 20 02 01"},
      {"03 80 8F 50 03 81 A7 10", "2000/5008 A0 04 01"},
      {"04 80 92 A7 61", nullptr},               // above the proposal
      {"02 80 00", nullptr},                     // no limit is above any limit
      {"02 82 60", nullptr},                     // a facility that was not proposed
      {"02 82 27", "300000/0 20 04 01"},         // undefined bits do not count
      {"02 83 05", nullptr},                     // more methods
      {"02 84 02", nullptr},                     // more pushes, though none were proposed
      {"01 80 01 82 01 83", "1400/0 00 01 01"},  // not understood: as without them
      {"03 83 02 09 02 82 80 02 82 20", "300000/0 80 02 01"},  // further octets and instances
      {"02 85 50 04 'x-y' 00 02 90 00", "300000/0 A0 04 01"},  // unknown and textual names
      {"00", nullptr},
      {"05 80 92 A7", nullptr},
      {"02 80 92", nullptr},  // a number that does not end
      {"80", nullptr}};
  const Capabilities proposed{300000, 0, std::uint8_t{0xA0}, std::uint8_t{4}, std::nullopt};
  for (const Case& test : cases) {
    const auto answered = decodeCapabilities(hex(test.answer));
    const auto a = answered ? agree(proposed, *answered) : std::nullopt;
    ASSERT_EQ(a.has_value(), test.agreed != nullptr) << test.answer;
    if (!a) continue;
    const std::uint8_t options = a->protocolOptions & 0xF8;
    EXPECT_EQ(std::to_string(a->clientSduSize) + "/" + std::to_string(a->serverSduSize) + " " +
                  hexText(std::vector{options, a->methodMor, a->pushMor}),
              test.agreed)
        << test.answer;
  }
}

TEST(WspPdu, RedirectAddressesThatRouteIpAreKept) {
  const WdpAddress current{.octets = {10, 0, 0, 1}, .size = 4, .port = 9201};
  const auto addresses = [&current](const char* entries) {
    std::string text;
    for (const WdpAddress& a : redirectAddresses(hex(entries), current)) {
      text += hexText(Octets(a.octets).first(a.size)) + ":" + std::to_string(a.port) + ";";
    }
    return text;
  };
  EXPECT_EQ(addresses("04 C0 00 02 01"), "C0 00 02 01:9201;");
  EXPECT_EQ(addresses("44 C3 50 C0 00 02 01 C4 0B C3 51 C0 00 02 02"),
            "C0 00 02 01:50000;C0 00 02 02:50001;");
  EXPECT_EQ(addresses("10 20 01 0D B8 00 00 00 00 00 00 00 00 00 00 00 01"),
            "20 01 0D B8 00 00 00 00 00 00 00 00 00 00 00 01:9201;");
  // A telephone number, a bearer of short messages, an address cut off.
  EXPECT_EQ(addresses("06 91 53 48 00 00 00 84 03 C0 00 02 01 04 C0 00 02 02 04 C0 00"),
            "C0 00 02 02:9201;");
  EXPECT_EQ(addresses(""), "");
  EXPECT_EQ(addresses("C4"), "");
}

}  // namespace
}  // namespace mmsbrix::session
