// The preview page in a real browser: slides are there, and nothing of a hostile message runs.
#include <gtest/gtest.h>
#include <mmsbrix/mms/mmscodec.h>

#include <array>
#include <string>

#include "compose.h"
#include "preview.h"
#include "support/child_process.h"
#include "support/counterparty.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

const std::string kMedia = MMSBRIX_SAMPLE_MEDIA;

class Browser : public testing::Test {
 protected:
  // What the browser made of the page, as it stands after all that could run has run.
  std::string domOf(const std::string& html) {
    const std::string page = folder_.put("page.html", html);
    ChildProcess browser(
        {"chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
         "--no-first-run", "--disable-background-networking", "--disable-component-update",
         "--disable-sync", "--user-data-dir=" + folder_.path("profile"),
         "--virtual-time-budget=3000", "--dump-dom", "file://" + page},
        folder_.path("dom"));
    if (!browser.started()) {
      missing_ = true;
      return "";
    }
    browser.wait();
    return folder_.get("dom");
  }
  TemporaryFolder folder_;
  bool missing_ = false;
};

std::string pageOf(CMMsg& message) {
  return tool::renderPreview(tool::describePage(message));
}

TEST_F(Browser, ShowsTheSlides) {
  tool::ComposeCommand command;
  command.to = {"+358401234567"};
  command.subject = "A & B <subject>";
  command.hasSubject = true;
  command.slides = {"text=First <slide> \xC3\xA4,image=" + kMedia + "/photo.jpg", "text=Second"};
  CMMsg message;
  std::vector<std::string> problems;
  ASSERT_TRUE(tool::composeMessage(command, message, problems));
  const std::string dom = domOf(pageOf(message));
  if (missing_ && !mustBeInstalled()) GTEST_SKIP() << "chromium is not installed";
  for (const char* shown : {"<title>A &amp; B &lt;subject&gt;</title>", "<dd>+358401234567</dd>",
                            ">First &lt;slide&gt; \xC3\xA4</div>", ">Second</div>",
                            "src=\"data:image/jpeg;base64,/9j/", "id=\"slide2\"", "</html>"}) {
    EXPECT_NE(dom.find(shown), std::string::npos) << shown << "\n" << dom.substr(0, 6000);
  }
}

void addPart(CMMsg& message, const char* type, const char* location, const std::string& content) {
  CMMPart& part = *message.Content()->NewChild();
  part.Headers()->AddNew()->Assign("Content-Type", type);
  part.Headers()->AddNew()->Assign("Content-Location", location);
  part.SetContent(content.data(), static_cast<int>(content.size()));
}

TEST_F(Browser, NothingOfAHostileMessageRuns) {
  const std::string script = "<script>document.title='owned'</script>";
  const std::string breakout = "\"><img src=x onerror=\"document.title='owned'\">";
  CMMsg message;
  message.SetMsgType(CMMsg::MSG_TYPE_RETRIEVE_CONF);
  const CMMString subject(("</title>" + script + breakout).c_str(), "utf-8");
  message.SetSubject(&subject);
  const CMMAddr from((script + "@x").c_str(), CMMAddr::TYPE_PLAIN);
  message.SetFrom(&from);
  CMMHdr& related = *message.Content()->Headers()->AddNew();
  related.Assign("Content-Type", "application/vnd.wap.multipart.related");
  addPart(message, "application/smil", "s.smil",
          "<smil><head><layout><root-layout width=\"100\" height=\"100\" "
          "background-color=\"red;}</style><script>document.title='owned'</script>\"/>"
          "<region id=\"r\" left=\"0;}body{background:url(javascript:alert(1))}\" top=\"0\" "
          "fit=\"fill;}</style>\"/></layout></head><body><par dur=\"1s&quot;onload=&quot;x()\">"
          "<text src=\"t.txt\" region=\"r\"/><img src=\"x.svg\"/><img src=\"bad.jpg\" alt=\"'\"/>"
          "<ref src=\"page.html\"/><img src=\"javascript:document.title='owned'\"/>"
          "<text src=\"data:text/html,&lt;script&gt;document.title='owned'&lt;/script&gt;\"/>"
          "</par></body></smil>");
  addPart(message, "text/plain", "t.txt", script + "</div></style>" + breakout);
  addPart(message, "image/svg+xml", "x.svg",
          "<svg xmlns='http://www.w3.org/2000/svg' onload=\"document.title='owned'\">" + script +
              "</svg>");
  addPart(message, ("image/jpeg" + breakout).c_str(), "bad.jpg", script);
  addPart(message, "text/html", "page.html", script);
  addPart(message, "text/html", (breakout + ".html").c_str(), script);

  const std::string html = pageOf(message);
  const std::string dom = domOf(html);
  if (missing_ && !mustBeInstalled()) GTEST_SKIP() << "chromium is not installed";
  ASSERT_NE(dom.find("</html>"), std::string::npos) << dom;
  // The script would have changed the title; the texts stand there as texts.
  EXPECT_EQ(dom.find("<title>owned"), std::string::npos);
  EXPECT_NE(dom.find("&lt;script&gt;document.title='owned'&lt;/script&gt;&lt;/div&gt;"),
            std::string::npos);
  for (const char* active : {"<script", "<svg", "<iframe", "<object", "<embed", "<img src=\"x\"",
                             "src=\"javascript:", "href=", "data:text/html", "data:image/svg"}) {
    EXPECT_EQ(dom.find(active), std::string::npos) << active;
  }
  EXPECT_NE(dom.find("default-src 'none'"), std::string::npos);
}

// What the page relies on: with a script smuggled in behind its policy, the browser refuses to run
// it.
TEST_F(Browser, ThePolicyOfThePageHolds) {
  CMMsg message;
  message.SetMsgType(CMMsg::MSG_TYPE_RETRIEVE_CONF);
  std::string html = pageOf(message);
  html.insert(
      html.find("</main>"),
      "<script>document.title='owned'</script><img src=x onerror=\"document.title='owned'\">");
  const std::string dom = domOf(html);
  if (missing_ && !mustBeInstalled()) GTEST_SKIP() << "chromium is not installed";
  ASSERT_NE(dom.find("<script>document.title='owned'</script>"), std::string::npos) << dom;
  EXPECT_NE(dom.find("<title>Multimedia message</title>"), std::string::npos);
  // The same without the policy does run, so the check above can fail.
  const std::size_t begin = html.find("<meta http-equiv");
  html.erase(begin, html.find('\n', begin) - begin);
  EXPECT_NE(domOf(html).find("<title>owned</title>"), std::string::npos);
}

}  // namespace
}  // namespace mmsbrix::test
