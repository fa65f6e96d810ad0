#include "command.h"

#include <mmsbrix/mms/charsets.h>
#include <mmsbrix/mms/mmscodec.h>
#include <mmsbrix/model/mmpart.h>

#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <istream>
#include <iterator>
#include <ostream>
#include <random>

#include "host.h"

namespace mmsbrix::tool {

namespace {

// Why the last file operation on `path` failed.
std::string reasonFor(const std::string& path) {
  const std::string reason = host::fileError();  // before the next operation
  std::error_code ignored;
  if (std::filesystem::is_directory(host::pathOf(path), ignored)) return path + ": is a directory";
  return path + ": " + (reason.empty() ? "cannot be read" : reason);
}

}  // namespace

std::optional<std::string> readAll(const std::string& path, std::istream& in, std::string& error) {
  if (path == "-") {
    std::string content{std::istreambuf_iterator<char>(in), {}};
    if (!in.bad()) return content;
    error = "standard input: cannot be read";
    return std::nullopt;
  }
  const auto file = readContent(path, in, error);
  return file ? std::optional<std::string>(charactersOf(*file)) : std::nullopt;
}

std::optional<CMMPart> readContent(const std::string& path, std::istream& in, std::string& error) {
  CMMPart file;
  if (path == "-") {
    const auto content = readAll(path, in, error);
    if (!content) return std::nullopt;
    file.SetContent(content->data(), static_cast<int>(content->size()));
    return file;
  }
  host::forgetFileError();
  if (file.Load(path.c_str())) return file;
  error = reasonFor(path);
  return std::nullopt;
}

std::string_view charactersOf(const CMMPart& part) noexcept {
  return {reinterpret_cast<const char*>(part.GetContent()),
          static_cast<std::size_t>(part.GetContentLen())};
}

bool loadMessage(const std::string& path, const char* verb, const Streams& streams,
                 CMMsg& message) {
  std::string error;
  bool read = false;
  if (path == "-") {
    if (const auto pdu = readAll(path, streams.in, error)) {
      MMS_LoadFromMemory(pdu->data(), static_cast<unsigned int>(pdu->size()), &message, 0);
      read = true;
    }
  } else {
    host::forgetFileError();
    read = MMS_Load(path.c_str(), &message, 0) == 1;
    if (!read) error = reasonFor(path);
  }
  if (!read) {
    streams.err << "mmsbrix " << verb << ": " << printable(error) << '\n';
    return false;
  }
  if (message.GetMsgType() != 0) return true;
  streams.err << "mmsbrix " << verb << ": " << printable(path)
              << ": offset 0: this is no MMS PDU\n";
  return false;
}

int writeOutput(const std::string& path, std::string_view content, const char* verb,
                const Streams& streams) {
  host::forgetFileError();
  bool written = false;
  if (path == "-") {
    streams.out.write(content.data(), static_cast<std::streamsize>(content.size()));
    written = static_cast<bool>(streams.out.flush());
  } else {
    CMMPart file;
    file.SetContent(content.data(), static_cast<int>(content.size()));
    written = file.Save(path.c_str());
  }
  if (written) return kDone;
  const std::string reason = host::fileError();
  streams.err << "mmsbrix " << verb << ": " << printable(path) << ": cannot be written"
              << (reason.empty() ? "" : ": ") << reason << '\n';
  return kFailed;
}

std::string writeNewFile(const std::string& folder, const std::string& stem,
                         const std::string& extension, std::string_view content) {
  constexpr int kMostTries = 10000;
  for (int number = 1; number <= kMostTries; ++number) {
    std::string path =
        folder + "/" + stem + (number == 1 ? "" : " #" + std::to_string(number)) + extension;
    const auto made = host::writeNewFile(path, content, host::Readers::everybody);
    if (made == host::NewFile::written) return path;
    if (made == host::NewFile::failed) return "";
  }
  return "";
}

bool parseEndpoint(std::string_view text, std::optional<std::uint16_t> defaultPort,
                   std::string& host, std::uint16_t& port) {
  const bool bracketed = text.starts_with('[');
  const std::size_t hostEnd = bracketed ? text.find(']') : text.find(':');
  if (bracketed && hostEnd == std::string_view::npos) return false;
  host = bracketed ? text.substr(1, hostEnd - 1) : text.substr(0, hostEnd);
  std::string_view rest = text.substr(bracketed ? hostEnd + 1 : std::min(hostEnd, text.size()));
  if (host.empty()) return false;
  if (rest.empty() || rest == ":") {
    port = defaultPort.value_or(0);
    return defaultPort.has_value();
  }
  if (!rest.starts_with(':')) return false;
  rest.remove_prefix(1);
  const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), port);
  return error == std::errc() && end == rest.data() + rest.size();
}

std::optional<Credentials> readCredentials(const std::string& path, std::string& error) {
  std::ifstream file(host::pathOf(path), std::ios::binary);
  std::string line;
  if (!file) {
    error = path + ": cannot be opened";
    return std::nullopt;
  }
  // What others can read is no secret: say so instead of relying on it.
  if (host::othersCanRead(path)) {
    error = path + ": others can read it; let its owner alone (chmod 600)";
    return std::nullopt;
  }
  host::keepOutOfCores();
  std::getline(file, line);
  if (line.ends_with('\r')) line.pop_back();
  const std::size_t colon = line.find(':');
  if (colon == std::string::npos) {
    error = path + ": no user:password in the first line";
    return std::nullopt;
  }
  return Credentials{line.substr(0, colon), line.substr(colon + 1)};
}

std::string printable(std::string_view text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  const bool utf8 = isUtf8(text);
  std::string result;
  for (const char c : text) {
    const auto octet = static_cast<std::uint8_t>(c);
    if (octet < 0x20 || octet == 0x7F || (octet >= 0x80 && !utf8)) {
      result += "\\x";
      result += kDigits[octet >> 4];
      result += kDigits[octet & 15];
    } else {
      result += c;
    }
  }
  return result;
}

std::string octetCount(std::uint64_t octets) {
  return std::to_string(octets) + (octets == 1 ? " octet" : " octets");
}

namespace {
constexpr std::string_view kBase64 =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
}

std::string toBase64(std::string_view octets) {
  std::string text;
  text.reserve((octets.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < octets.size(); i += 3) {
    std::uint32_t group = 0;
    const std::size_t count = std::min<std::size_t>(3, octets.size() - i);
    for (std::size_t k = 0; k < 3; ++k) {
      group = group << 8 | (k < count ? static_cast<std::uint8_t>(octets[i + k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += k <= count ? kBase64[(group >> (18 - 6 * k)) & 63] : '=';
    }
  }
  return text;
}

std::optional<std::string> fromBase64(std::string_view text) {
  static const auto values = [] {
    std::array<std::int8_t, 256> table{};
    table.fill(-1);
    for (std::size_t i = 0; i < kBase64.size(); ++i) {
      table[static_cast<std::uint8_t>(kBase64[i])] = static_cast<std::int8_t>(i);
    }
    return table;
  }();
  if (text.size() % 4 != 0) return std::nullopt;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  text.remove_suffix(padding);
  std::string octets;
  octets.reserve(text.size() * 3 / 4);
  std::uint32_t group = 0;
  unsigned bits = 0;
  for (const char c : text) {
    const std::int8_t value = values[static_cast<std::uint8_t>(c)];
    if (value < 0) return std::nullopt;
    group = group << 6 | static_cast<std::uint32_t>(value);
    bits += 6;
    if (bits < 8) continue;
    bits -= 8;
    octets += static_cast<char>(group >> bits & 0xFF);
  }
  return octets;
}

TemporaryFile::TemporaryFile(std::string_view content) {
  constexpr int kMostTries = 100;
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
  if (error) return;
  std::random_device random;
  for (int tries = 0; tries < kMostTries; ++tries) {
    const std::string path =
        host::textOf(folder / ("mmsbrix-" + std::to_string(random()) + std::to_string(random())));
    const auto made = host::writeNewFile(path, content, host::Readers::ownerOnly);
    if (made == host::NewFile::exists) continue;
    if (made == host::NewFile::written) path_ = path;
    return;
  }
}

TemporaryFile::~TemporaryFile() {
  std::error_code ignored;
  if (!path_.empty()) std::filesystem::remove(host::pathOf(path_), ignored);
}

}  // namespace mmsbrix::tool
