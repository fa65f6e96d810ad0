#include "wapstack/exception_log.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/local_time.h"
#include "platform/user_folders.h"

namespace mmsbrix {
namespace {

namespace fs = std::filesystem;

struct Log {
  std::mutex mutex;
  std::optional<std::string> folder;
};

// Never destroyed: entries may come until the process ends.
Log& log() {
  static Log& instance = *new Log;
  return instance;
}

fs::path pathOf(std::string_view utf8) {
  return {std::u8string(utf8.begin(), utf8.end())};
}

std::string systemTime() {
  const auto now = std::chrono::system_clock::now();
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now.time_since_epoch());
  const SYSTEMTIME time =
      platform::toLocalTime(static_cast<std::uint64_t>(seconds.count())).value_or(SYSTEMTIME{});
  char text[40];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u", unsigned{time.wYear},
                unsigned{time.wMonth}, unsigned{time.wDay}, unsigned{time.wHour},
                unsigned{time.wMinute}, unsigned{time.wSecond});
  return text;
}

void append(const fs::path& folder, std::string_view source, unsigned line, std::string_view text) {
  std::error_code ignored;
  fs::create_directories(folder, ignored);
  const fs::path file = folder / "exceptions.log";
  if (fs::file_size(file, ignored) > kMaxExceptionLog && !ignored) {
    fs::rename(file, folder / "exceptions.log.old", ignored);
  }
  std::ofstream out(file, std::ios::app | std::ios::binary);
  out << "\nEXCEPTION: file '" << source << "', line " << line << ", system time " << systemTime()
      << "\n '" << text << "'\n";
}

}  // namespace

void useExceptionLogFolder(std::string folder) {
  const std::lock_guard lock(log().mutex);
  log().folder = std::move(folder);
}

void logException(std::string_view source, unsigned line, std::string_view text) noexcept {
  try {
    const std::lock_guard lock(log().mutex);
    if (!log().folder) log().folder = platform::stateFolder();
    if (!log().folder->empty()) append(pathOf(*log().folder), source, line, text);
  } catch (...) {  // NOLINT(bugprone-empty-catch): a log that fails must not stop the stack
  }
}

void logAssertion(std::string_view source, unsigned line, std::string_view text) noexcept {
  try {
    logException(source, line, "Assertion failed. " + std::string(text));
  } catch (...) {  // NOLINT(bugprone-empty-catch): as above
  }
}

void logCriticalAssertion(std::string_view source, unsigned line, std::string_view text) noexcept {
  try {
    logException(source, line, "Critical assertion failed. " + std::string(text));
  } catch (...) {  // NOLINT(bugprone-empty-catch): as above
  }
}

}  // namespace mmsbrix
