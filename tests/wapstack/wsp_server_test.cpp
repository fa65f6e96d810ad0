// The WSP server against a scripted client.
#include "wapstack/wsp_server.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "wapstack/wtp_script.h"

namespace mmsbrix::session {
namespace {

using wtp::test::hex;
using wtp::test::hexText;
using wtp::test::times;

std::string describe(const ServerEvent& event) {
  constexpr const char* kNames[] = {"connect",        "disconnected",   "suspended",
                                    "resume",         "method",         "method-confirmed",
                                    "method-aborted", "push-confirmed", "push-aborted"};
  std::string text = kNames[static_cast<int>(event.kind)];
  text += " " + std::to_string(event.session);
  if (event.code != 0) text += " " + hexText(std::vector{event.code});
  if (event.method != 0) text += " " + hexText(std::vector{event.method}) + " " + event.uri;
  if (!event.headers.empty()) text += " " + hexText(event.headers);
  if (!event.body.empty()) text += " '" + std::string(asText(event.body)) + "'";
  return text;
}

/// Scripts for a server, in octets of WTP and WSP, about the session and method told last:
///   accept [HEX] | refuse HEX | redirect FLAGS | disconnect | reply [HEX] | abort HEX
///   push [HEX] | confirmed-push [HEX] | limits SIZE OPTIONS METHODS PUSHES
/// Replies are of status 20 and the type BE, redirects to 192.0.2.9 and to port 50000 there.
class ServerRun : public wtp::test::ScriptPlayer<Server> {
 public:
  ServerRun() : ScriptPlayer(wtp::Settings{}) {}

 private:
  bool request(const std::string& verb, const std::string& rest) override {
    if (verb == "accept") {
      note(engine_.accept(session_, hex(rest), now_));
    } else if (verb == "refuse") {
      note(engine_.refuse(session_, hex(rest).at(0), hex("83"), hex("'no'"), now_));
    } else if (verb == "redirect") {
      const WdpAddress other{.octets = {192, 0, 2, 9}, .size = 4, .port = 9201};
      WdpAddress elsewhere = other;
      elsewhere.port = 50000;
      note(engine_.redirect(session_, hex(rest).at(0), std::vector{other, elsewhere}, now_));
    } else if (verb == "disconnect") {
      note(engine_.disconnect(session_, Reason::congestion, now_));
    } else if (verb == "reply") {
      note(engine_.reply(id_, 0x20, hex("BE"), hex(rest), now_));
    } else if (verb == "abort") {
      note(engine_.abortMethod(id_, hex(rest).at(0), now_));
    } else if (verb == "push") {
      note(engine_.push(session_, hex("BE"), hex(rest), now_));
    } else if (verb == "confirmed-push") {
      note(engine_.confirmedPush(session_, hex("BE"), hex(rest), id_, now_));
    } else if (verb == "limits") {
      const auto l = hex(rest);
      engine_.limit({l.at(0), l.at(0), l.at(1), l.at(2), l.at(3)});
    } else {
      return false;
    }
    return true;
  }
  std::string describeNext() override {
    const auto event = engine_.takeEvent();
    if (!event) return "nothing";
    session_ = event->session;
    if (event->kind == ServerEvent::Kind::methodIndication) id_ = event->id;
    return describe(*event);
  }

  SessionId session_ = 0;
  wtp::Handle id_ = 0;
};

// Connect: proposes 300 octets both ways, all facilities, 2 methods and 1 push; one header.
const std::string kConnect =
    "< 0A 00 01 02 01 10 11 02 03 80 82 2C 03 81 82 2C 02 82 E0 02 83 02 02 84 01 80 80\n"
    "! connect 1 80 80\n";
const std::string kReplied =
    "> 12 80 01 02 01 11 00 03 80 82 2C 03 81 82 2C 02 82 E0 02 83 02 02 84 01\n";
const std::string kConnected = kConnect + "accept\n " + kReplied + "< 18 00 01\n";
const std::string kConnectPlain = "< 0A 00 01 02 01 10 00 00\n ! connect 1\n";
const std::string kPlain = kConnectPlain + "accept\n > 12 80 01 02 01 00 00\n < 18 00 01\n";
const std::string kPost = "< 0A 00 02 02 60 01 01 'u' BE 'mms'\n ! method 1 60 u BE 'mms'\n";
const std::string kSuspended = kConnected + "< 0E 00 02 00 08 01\n ! suspended 1 E2\n";
const std::string kResuming = kSuspended + "< 0A 00 03 02 09 01 00 A9 00\n ! resume 1 A9 00\n";
const std::string kBig = std::string("'") + std::string(301, 'x') + "'";

struct Script {
  const char* name;
  std::string lines;
};

std::vector<Script> scripts() {
  const std::string over = "+200000\n idle\n";
  const std::string wrongState = "! refused not in this state of the session\n";
  return {
      {"connect, post, get, disconnect",
       kConnected + "accept\n" + wrongState + kPost +
           "reply 'conf'\n > 12 80 02 04 20 01 BE 'conf'\n reply\n" + wrongState +
           "< 98 00 02 09 'k'\n ! method-confirmed 1 6B\n"
           "< 0A 00 03 02 40 01 'v' 83 02\n ! method 1 40 v 83 02\n +2001\n > 18 80 03\n"
           "reply\n > 12 80 03 04 20 01 BE\n < 18 00 03\n ! method-confirmed 1\n"
           "< 0E 00 04 00 05 01\n ! disconnected 1 E1\n"
           "< 0A 00 05 02 40 01 'v'\n > 21 80 05 E1\n" +
           over},
      {"limits are granted, what is not known is told so",
       "limits C8 A0 01 00\n"
       "< 0A 00 01 02 01 10 14 00 02 80 00 02 81 64 02 82 E0 02 83 09 04 85 50 'x' 00 02 'y' 00\n"
       "! connect 1\n accept\n"
       "> 12 80 01 02 01 15 00 03 80 81 48 02 81 64 02 82 A0 02 83 01 02 84 00 01 85 02 'y' 00\n"
       "< 18 00 01\n push\n ! refused the session has no pushes of this kind\n"
       "< 0A 00 02 02 40 01 'u'\n ! method 1 40 u\n < 0A 00 03 02 40 01 'u'\n > 21 80 03 E7\n"
       "disconnect\n > 00 04 21 80 02 E1 06 0A 00 01 00 05 01\n ! method-aborted 1 E1\n" +
           over},
      {"without a proposal the defaults hold",
       kPlain +
           "push\n ! refused the session has no "
           "pushes of this kind\n < 0E 00 02 00 08 01\n ! disconnected 1 E2\n" +
           over},
      {"refused", kConnect + "refuse 45\n > 12 80 01 04 45 01 83 'no'\n < 18 00 01\n refuse 45\n" +
                      wrongState + over},
      {"redirected", kConnect +
                         "redirect 80\n > 12 80 01 03 80 04 C0 00 02 09 44 C3 50 C0 00 02 09\n "
                         "< 18 00 01\n" +
                         over},
      {"a connect that is aborted", kConnect + "disconnect\n > 21 80 01 E4\n" + over},
      {"the client gives up its connect",
       kConnect + "< 21 00 01 E1\n ! disconnected 1 E1\n" + over},
      {"no acknowledgement of the reply", kConnectPlain + "accept\n > 12 80 01 02 01 00 00\n" +
                                              times(8, "+7001\n > 13 80 01 02 01 00 00\n") +
                                              "+7001\n ! disconnected 1 E9\n" + over},
      {"a method overtakes its session",
       kConnect +
           "< 0A 00 02 02 40 01 'a'\n < 0A 00 03 02 40 01 'b'\n < 0A 00 04 02 40 01 'c'\n"
           "accept\n > 00 18 12 80 01 02 01 11 00 03 80 82 2C 03 81 82 2C 02 82 E0 02 83 02 "
           "02 84 01 04 21 80 04 E7\n ! method 1 40 a\n ! method 1 40 b\n"
           "< 18 00 01\n < 0E 00 05 00 05 01\n > 00 04 21 80 02 E1 04 21 80 03 E1\n"
           "! method-aborted 1 E1\n ! method-aborted 1 E1\n ! disconnected 1 E1\n" +
           over},
      {"a method whose session is refused",
       kConnect +
           "< 0A 00 02 02 40 01 'a'\n refuse 45\n"
           "> 00 09 12 80 01 04 45 01 83 'no' 04 21 80 02 E5\n < 18 00 01\n" +
           over},
      {"a second connect replaces the session when it is accepted",
       kConnected + kPost +
           "< 0A 00 05 02 01 10 00 00\n ! connect 2\n accept\n"
           "> 00 07 12 80 05 02 02 00 00 04 21 80 02 E1\n ! method-aborted 1 E1\n ! disconnected 1 "
           "E1\n"
           "< 18 00 05\n < 0E 00 06 00 05 02\n ! disconnected 2 E1\n" +
           over},
      {"a second connect before the answer",
       kConnect +
           "< 0A 00 05 02 01 10 00 00\n > 21 80 01 E1\n ! disconnected 1 E1\n ! connect 2\n"
           "disconnect\n > 21 80 05 E4\n" +
           over},

      {"methods that are aborted",
       kConnected + kPost + "abort E4\n > 21 80 02 E4\n ! method-aborted 1 E4\n reply\n" +
           wrongState +
           "< 0A 00 03 02 40 01 'u'\n ! method 1 40 u\n < 21 00 03 E8\n ! method-aborted 1 E8\n"
           "< 0A 00 04 02 40 01 'u'\n ! method 1 40 u\n < 21 00 04 E2\n ! method-aborted 1 E2\n ! "
           "suspended 1 E2\n" +
           over},
      {"replies that the client would not take",
       kConnected + kPost + "reply " + kBig +
           "\n ! refused the PDU is larger than the client accepts\n abort E6\n > 21 80 02 E6\n ! "
           "method-aborted 1 E6\n"
           "< 0A 00 03 02 60 01 01 'u' BE " +
           kBig +
           "\n > 21 80 03 E6\n"
           "push " +
           kBig + "\n ! refused the PDU is larger than the client accepts\n" + over},
      {"one packet only, for a client that takes no segments",
       kPlain +
           "< 0E 00 02 02 40 01 'u'\n ! method 1 40 u\n reply 'r'\n "
           "> 16 80 02 04 20 01 BE 'r'\n < 18 00 02\n ! method-confirmed 1\n" +
           over},
      {"pushes", kConnected +
                     "push 'n'\n > 0A 00 01 00 06 01 BE 'n'\n confirmed-push 'm'\n"
                     "> 0A 00 02 11 07 01 BE 'm'\n confirmed-push\n ! refused as many pushes are "
                     "open as the client takes\n < 98 80 02 09 'k'\n ! push-confirmed 1 6B\n"
                     "confirmed-push\n > 0A 00 03 11 07 01 BE\n < 21 80 03 EE\n ! push-aborted 1 "
                     "EE\n confirmed-push\n > 0A 00 04 11 07 01 BE\n < 21 80 04 E1\n"
                     "! push-aborted 1 E1\n ! disconnected 1 E1\n push\n" +
                     wrongState + over},

      {"suspended and resumed",
       kConnected + kPost +
           "< 0E 00 03 00 08 01\n > 21 80 02 E2\n ! method-aborted 1 E2\n ! suspended 1 E2\n "
           "push\n" +
           wrongState +
           "< 0A 00 04 02 40 01 'u'\n > 21 80 04 E1\n"
           "< 0A 00 05 02 09 01 00 80 80\n ! resume 1 80 80\n < 0A 00 06 02 40 01 'u'\n"
           "accept A6 00\n > 12 80 05 04 20 02 A6 00\n ! method 1 40 u\n < 18 00 05\n"
           "reply\n > 12 80 06 04 20 01 BE\n < 0A 00 07 02 09 01 00\n > 21 80 06 E3\n"
           "! method-aborted 1 E3\n ! suspended 1 E3\n ! resume 1\n accept\n > 12 80 07 04 20 00\n "
           "< 18 00 07\n"
           "disconnect\n > 0A 00 01 00 05 01\n" +
           over},
      {"resumed from another address",
       kSuspended +
           "foreign 0A 00 03 02 09 01 00\n ! resume 1\n"
           "accept\n > 12 80 03 04 20 00\n foreign 18 00 03\n"
           "< 0A 00 04 02 40 01 'u'\n > 21 80 04 E1\n foreign 0A 00 05 02 40 01 'u'\n"
           "! method 1 40 u\n abort E8\n > 21 80 05 E8\n ! method-aborted 1 E8\n" +
           over},
      {"resume refused", kResuming +
                             "refuse 44\n > 12 80 03 04 44 01 83 'no'\n < 18 00 03\n"
                             "< 0A 00 04 02 09 01 00\n > 21 80 04 E1\n" +
                             over},
      {"resume given up",
       kResuming +
           "< 21 00 03 E2\n ! suspended 1 E2\n "
           "< 0A 00 04 02 09 01 00\n ! resume 1\n < 0E 00 05 00 08 01\n > 21 80 04 E2\n"
           "! suspended 1 E2\n < 0E 00 06 00 05 01\n ! disconnected 1 E1\n" +
           over},
      {"sessions that cannot be resumed",
       "< 0A 00 01 02 09 07 00\n > 21 80 01 E1\n < 0A 00 02 02 01 10 00 00\n ! connect 1\n accept\n"
       "> 12 80 02 02 01 00 00\n < 18 00 02\n < 0A 00 03 02 09 01 00\n > 21 80 03 E1\n" +
           over},

      {"PDUs that are none, with no session",
       "< 0A 00 01 02 40 01 'u'\n > 21 80 01 E1\n < 0A 00 02 02\n > 21 80 02 E1\n"
       "< 0A 00 03 02 01 10 05\n > 21 80 03 E0\n < 0A 00 04 02 01 20 00 00\n > 21 80 04 E0\n"
       "< 0A 00 05 02 01 10 02 00 02 80\n > 21 80 05 E0\n < 0A 00 06 01 01 10 00 00\n "
       "> 21 80 06 E0\n < 0A 00 07 00 01 10 00 00\n < 0E 00 08 00 05 01\n" +
           over},
      {"PDUs that are none, in a session",
       kConnected +
           "< 0A 00 02 02 02 01 00 00\n > 21 80 02 E0\n < 0A 00 03 02 60 02 01 'u'\n "
           "> 21 80 03 E0\n < 0A 00 04 02 05 01\n > 21 80 04 E0\n"
           "< 0A 00 05 01 40 01 'u'\n > 21 80 05 E0\n < 0A 00 06 02 40 82 82 82 82 82 01\n"
           "> 21 80 06 E0\n < 0E 00 07 00 05 02\n < 0E 00 08 00 80\n < 0E 00 09 00\n"
           "foreign 0E 00 01 00 05 01\n foreign 0E 00 02 00 08 01\n"
           "< 0A 00 0A 02 40 01 'u'\n ! method 1 40 u\n abort E8\n > 21 80 0A E8\n ! "
           "method-aborted 1 E8\n" +
           over},
  };
}

TEST(WspServer, AnswersAsTheStandardSays) {
  for (const Script& script : scripts()) {
    SCOPED_TRACE(script.name);
    ServerRun().run(script.lines);
  }
}

TEST(WspServer, TheOldestSessionMakesRoom) {
  Server server({}, 1);
  const wtp::TimePoint now;
  for (std::size_t i = 0; i <= Server::kMaxSessions; ++i) {
    const WdpAddress peer{
        .octets = {10, 0, 0, 1}, .size = 4, .port = static_cast<std::uint16_t>(i)};
    server.receive(peer, hex("0E 00 01 02 01 10 00 00"), now);
    server.accept(static_cast<SessionId>(i + 1), {}, now);
    server.receive(peer, hex("18 00 01"), now);
    while (server.takeDatagram()) continue;
  }
  EXPECT_EQ(server.sessions(), Server::kMaxSessions);
  std::string ended;
  while (const auto event = server.takeEvent()) {
    if (event->kind == ServerEvent::Kind::disconnectIndication) ended += describe(*event) + ";";
  }
  EXPECT_EQ(ended, "disconnected 1 E4;");
}

}  // namespace
}  // namespace mmsbrix::session
