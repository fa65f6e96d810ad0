// The components of the system behind the seams, where a caller can tell that it is they.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/charset.h"
#include "platform/files.h"
#include "platform/host_events.h"
#include "platform/http.h"
#include "platform/local_time.h"
#include "platform/media_types.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

using namespace platform;

TEST(MediaTypes, ComeFromTheRegistry) {
  const char kType[] = "MIME\\Database\\Content Type\\application/x-mmsbrix-test";
  EXPECT_EQ(extensionOfMediaType("application/x-mmsbrix-test"), "");
  ASSERT_EQ(::RegSetKeyValueA(HKEY_CLASSES_ROOT, kType, "Extension", REG_SZ, ".mmsbrixtest", 13),
            ERROR_SUCCESS);
  ASSERT_EQ(::RegSetKeyValueA(HKEY_CLASSES_ROOT, ".mmsbrixtest", "Content Type", REG_SZ,
                              "application/x-mmsbrix-test", 27),
            ERROR_SUCCESS);
  EXPECT_EQ(extensionOfMediaType("application/x-mmsbrix-test"), ".mmsbrixtest");
  EXPECT_EQ(mediaTypeOfExtension(".mmsbrixtest"), "application/x-mmsbrix-test");
  ::RegDeleteKeyA(HKEY_CLASSES_ROOT, kType);
  ::RegDeleteKeyA(HKEY_CLASSES_ROOT, ".mmsbrixtest");
  EXPECT_EQ(extensionOfMediaType("image/jpeg"), ".jpg");
}

TEST(Charsets, AreTheSystemsCodePages) {
  struct Case {
    const char* charset;
    std::string octets;
    std::string utf8;
  };
  for (const Case& c : std::vector<Case>{
           {"windows-1252", "\x80", "\xE2\x82\xAC"},
           {"iso-8859-15", "\xA4", "\xE2\x82\xAC"},
           {"koi8-r", "\xC1", "\xD0\xB0"},
           {"shift_jis", "\x93\xFA", "\xE6\x97\xA5"},
           {"big5", "\xA4\xE9", "\xE6\x97\xA5"},
           {"utf-16le", std::string("\x3D\xD8\x00\xDE", 4), "\xF0\x9F\x98\x80"},
       }) {
    EXPECT_EQ(convertCharset(c.octets, c.charset, "utf-8"), c.utf8) << c.charset;
    EXPECT_EQ(convertCharset(c.utf8, "utf-8", c.charset), c.octets) << c.charset;
  }
  EXPECT_EQ(convertCharset("\xC3", "utf-8", "utf-16le"), std::nullopt);
  EXPECT_EQ(convertCharset("\xE2\x82\xAC", "utf-8", "iso-8859-1"), std::nullopt);
  EXPECT_EQ(convertCharset("\xE4", "us-ascii", "utf-8"), std::nullopt);
  EXPECT_EQ(convertCharset("a", "no-such-charset", "utf-8"), std::nullopt);
}

TEST(LocalTime, HasMoreThan32Bits) {
  constexpr std::uint64_t kIn2050 = 2'540'000'000;
  const auto local = toLocalTime(kIn2050);
  ASSERT_TRUE(local);
  EXPECT_EQ(local->wYear, 2050);
  EXPECT_EQ(fromLocalTime(*local), static_cast<std::int64_t>(kIn2050));
  const SYSTEMTIME beyond{2049, 13, 0, 31 + 28 + 4, 25, 0, 0, 0};
  const SYSTEMTIME same{2050, 3, 0, 5, 1, 0, 0, 0};
  EXPECT_EQ(fromLocalTime(beyond), fromLocalTime(same));
}

// A reader that shares neither writing nor deleting keeps the file as it is.
TEST(Files, SharingIsAsLaidDown) {
  const TemporaryFolder folder;
  const std::string path = folder.put("f", "old");
  const std::uint8_t content[] = {'n', 'e', 'w'};
  {
    auto reader = InputFile::open(path.c_str());
    ASSERT_TRUE(reader);
    EXPECT_TRUE(InputFile::open(path.c_str())) << "reading is shared";
    EXPECT_EQ(writeWholeFile(path.c_str(), content), unsigned{ERROR_SHARING_VIOLATION});
  }
  EXPECT_EQ(folder.get("f"), "old");
  EXPECT_EQ(writeWholeFile(path.c_str(), content), 0U);
  EXPECT_EQ(folder.get("f"), "new");
  EXPECT_EQ(folder.entries(), 1);
}

TEST(Files, NamesAreUtf8OrAnsi) {
  const TemporaryFolder folder;
  const std::uint8_t content[] = {'x'};
  const std::string utf8 = folder.path() + "n\xC3\xA4yte";
  ASSERT_EQ(writeWholeFile(utf8.c_str(), content), 0U);
  EXPECT_NE(::GetFileAttributesW((std::filesystem::path(folder.path()) / L"n\u00E4yte").c_str()),
            INVALID_FILE_ATTRIBUTES);
  if (::GetACP() == 1252) {
    EXPECT_TRUE(InputFile::open((folder.path() + "n\xE4yte").c_str()));
  }
  EXPECT_EQ(writeNewFile(utf8.c_str(), content), kErrorFileExists);
  EXPECT_EQ(folder.entries(), 1);
}

int dispatched = 0;

void CALLBACK onTimer(HWND, UINT, UINT_PTR, DWORD) {
  ++dispatched;
}

TEST(HostEvents, AreDispatchedAndQuittingStaysKnown) {
  MSG message{};
  ::PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE);  // makes the queue
  ::SetTimer(nullptr, 0, 10, onTimer);
  for (int wait = 0; wait < 100 && dispatched == 0; ++wait) {
    ::Sleep(10);
    dispatchHostEvents();
  }
  EXPECT_GT(dispatched, 0);
  ::PostQuitMessage(7);
  dispatchHostEvents();
  ASSERT_NE(::PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE), FALSE);
  EXPECT_EQ(message.wParam, 7U);
}

TEST(OfflineMode, IsOfTheHttpComponent) {
  EXPECT_FALSE(isOfflineByUser());
  restoreOfflineByUser();
  const bool offline = isOfflineByUser();
  setOnline();
  EXPECT_FALSE(isOfflineByUser());
  // Wine accepts the state and does not keep it.
  if (!offline) GTEST_SKIP() << "this system has no offline mode";
}

}  // namespace
}  // namespace mmsbrix::test
