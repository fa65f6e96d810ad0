// Settings of relays: those of operators, and those that are kept under names.
#include "operators.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>

#include "command_line.h"
#include "send.h"
#include "support/host.h"
#include "support/mms_http.h"
#include "support/raw_server.h"
#include "support/send_req.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

namespace fs = std::filesystem;

// In the form of mobile-broadband-provider-info, with what is odd in it.
constexpr const char* kDatabase = R"(<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE serviceproviders SYSTEM "serviceproviders.2.dtd">
<serviceproviders format="2.0">
<country code="fi">
  <provider><name>Kaiku &amp; Co</name><name xml:lang="sv">Eko</name><gsm>
    <network-id mcc="244" mnc="99"/>
    <apn value="internet"><usage type="internet"/><username>x</username></apn>
    <apn value="mms.kaiku"><usage type="mms"/><name>Kaiku MMS</name><username>mms</username>
      <password>p w</password><mmsc> http://mms.kaiku.example/mmsc </mmsc>
      <mmsproxy>http://10.1.1.1:8080/</mmsproxy></apn>
  </gsm></provider>
  <provider><name>Twin</name><gsm>
    <apn value="a"><mmsc>http://twin.example/a</mmsc></apn>
    <apn value="b"><mmsc>http://twin.example/b</mmsc><mmsproxy>10.2.2.2</mmsproxy></apn>
  </gsm></provider>
  <provider><name>Twin Plus</name><gsm>
    <apn value="a"><mmsc>http://plus.example/</mmsc></apn></gsm></provider>
</country>
<country code="se"><provider><name>Kaiku</name><gsm>
  <apn value="c"><mmsc>http://se.example/</mmsc></apn></gsm></provider></country>
</serviceproviders>)";

struct OperatorCase {
  const char* name;
  const char* url;  // "" for none
  const char* proxy;
  const char* error;
};

TEST(Operators, AreFoundByCountryNameAndAccessPoint) {
  const TemporaryFolder folder;
  const std::string database = folder.put("db.xml", kDatabase);
  for (const auto& [name, url, proxy, wrong] : std::to_array<OperatorCase>({
           {"fi/kaiku & CO", "http://mms.kaiku.example/mmsc", "10.1.1.1:8080", ""},
           {"FI/kai", "http://mms.kaiku.example/mmsc", "10.1.1.1:8080", ""},
           {"fi/Twin", "", "", "more than one is fi/Twin, such as fi/Twin/a and fi/Twin/b"},
           {"fi/twin/B", "http://twin.example/b", "10.2.2.2:80", ""},
           {"fi/Twin P", "http://plus.example/", "", ""},
           {"fi/Eko", "", "", "no operator fi/Eko"},
           {"no/Kaiku", "", "", "no operator no/Kaiku"},
       })) {
    std::string error;
    const auto profile = tool::operatorProfile(name, database, error);
    ASSERT_EQ(profile.has_value(), *url != '\0') << name << error;
    EXPECT_EQ(error.substr(0, std::string(wrong).size()), wrong) << name;
    if (!profile) continue;
    EXPECT_EQ(profile->url, url) << name;
    EXPECT_EQ(profile->proxy, proxy) << name;
  }
  std::string error;
  const auto kaiku = tool::operatorProfile("fi/Kaiku", database, error);
  EXPECT_EQ(kaiku->user + ":" + kaiku->password, "mms:p w");
}

TEST(Operators, WhatIsNoDatabaseIsSaid) {
  const TemporaryFolder folder;
  for (const auto& [content, says] : std::to_array<std::pair<const char*, const char*>>(
           {{"<a/>", "no database"}, {"<serviceproviders>", "line "}, {"", "line "}})) {
    Caught caught;
    tool::OperatorsCommand command;
    command.database = folder.put("db.xml", content);
    EXPECT_EQ(runOperators(command, caught.streams()), 1) << content;
    EXPECT_NE(caught.err.str().find(says), std::string::npos) << caught.err.str();
  }
}

class Profiles : public testing::Test {
 protected:
  std::string config(const tool::ConfigCommand& command, int expected = 0) {
    Caught caught;
    EXPECT_EQ(runConfig(command, caught.streams()), expected) << caught.err.str();
    return caught.out.str() + caught.err.str();
  }

  TemporaryFolder folder_;
  EnvironmentVariable place_{"XDG_CONFIG_HOME", folder_.path("config")};
};

TEST_F(Profiles, AreKeptForTheOwnerOnlyAndTakenForSending) {
  RawServer relay([](const RawRequest& request) -> RawReply {
    const bool known = request.header("Authorization") == "Basic YW5uOnMzIGNyZXQ=";
    return {{known ? httpAnswer(kSendConfOk) : httpAnswer("", "", "401 Unauthorized")}};
  });
  tool::ConfigCommand keep;
  keep.name = "default";
  keep.changes.url = "http://mmsc.example/mms";
  keep.changes.proxy = relay.address();
  keep.credentialsFile = folder_.putPrivate("secret", "ann:s3 cret\n");
  const std::string shown = config(keep);
  EXPECT_NE(shown.find("user = ann\npassword = (kept)\n"), std::string::npos) << shown;
  EXPECT_EQ(shown.find("s3"), std::string::npos);
  const fs::path file = folder_.path("config/mmsbrix/profiles");
  EXPECT_TRUE(isClosedToOthers(file.string()));
  EXPECT_TRUE(isClosedToOthers(file.parent_path().string()));

  openToOthers(file.string());
  EXPECT_FALSE(isClosedToOthers(file.string()));
  tool::SendCommand send;
  send.file = folder_.put("m.mms", encodeSendReq());
  Caught sent;
  EXPECT_EQ(runSend(send, sent.streams()), 0) << sent.err.str();
  EXPECT_TRUE(isClosedToOthers(file.string()));

  send.proxy = "127.0.0.1:1";  // what is given goes before what is kept
  Caught other;
  EXPECT_EQ(runSend(send, other.streams()), 1);
  send.proxy.clear();
  send.profile = "none";
  Caught unknown;
  EXPECT_EQ(runSend(send, unknown.streams()), 1);
  EXPECT_NE(unknown.err.str().find("there is no profile none"), std::string::npos);

  tool::ConfigCommand remove;
  remove.name = "default";
  remove.remove = true;
  config(remove);
  send.profile.clear();
  Caught nowhere;
  EXPECT_EQ(runSend(send, nowhere.streams()), 2);
}

TEST_F(Profiles, ComeFromAnOperatorAndComeBackAsTheyWere) {
  const std::string database = folder_.put("db.xml", kDatabase);
  tool::ConfigCommand kaiku;
  kaiku.name = "work phone";
  kaiku.operatorName = "fi/kaiku";
  kaiku.database = database;
  kaiku.changes.userAgent = "Phone/1 [x] = y";
  const std::string shown = config(kaiku);
  EXPECT_NE(shown.find("url = http://mms.kaiku.example/mmsc\nproxy = 10.1.1.1:8080\nuser = mms\n"),
            std::string::npos)
      << shown;
  std::string error;
  const auto profiles = tool::loadProfiles(error);
  ASSERT_TRUE(profiles && profiles->contains("work phone")) << error;
  EXPECT_EQ(profiles->at("work phone").password, "p w");
  EXPECT_EQ(profiles->at("work phone").userAgent, "Phone/1 [x] = y");
  EXPECT_NE(config({}).find("[work phone]\n"), std::string::npos);

  tool::ConfigCommand odd;
  odd.name = "a]\n[b";
  config(odd, 2);
  odd.name = "b";
  odd.changes.url = "http://x\nuser = y";
  config(odd, 1);
}

}  // namespace
}  // namespace mmsbrix::test
