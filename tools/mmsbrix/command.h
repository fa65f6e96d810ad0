// What the subcommands share: streams, exit status, files and "-", addresses and credentials.
#ifndef MMSBRIX_TOOLS_COMMAND_H
#define MMSBRIX_TOOLS_COMMAND_H

#include <mmsbrix/model/mmsg.h>

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mmsbrix::tool {

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;      ///< refused or failed; the reason is on the error stream
inline constexpr int kWrongUsage = 2;  ///< the command line makes no sense

/// Where a subcommand reads and writes: results to `out`, talk to `err`.
struct Streams {
  std::istream& in;
  std::ostream& out;
  std::ostream& err;
};

/// A file's octets, or those of `in` for "-".  Nothing on failure, and `error` names the file and
/// says why.
std::optional<std::string> readAll(const std::string& path, std::istream& in, std::string& error);
/// The same as the content of a part, which a file is read into without a copy.
std::optional<CMMPart> readContent(const std::string& path, std::istream& in, std::string& error);
/// The content of a part as characters.
[[nodiscard]] std::string_view charactersOf(const CMMPart& part) noexcept;

/// Loads a message from a file or `in`; false, having said why on behalf of `verb`, when it cannot.
bool loadMessage(const std::string& path, const char* verb, const Streams& streams, CMMsg& message);

/// Writes a result to a file, or to `out` for "-"; an existing file stays when that fails, which is
/// said on behalf of `verb`.  An exit status.
int writeOutput(const std::string& path, std::string_view content, const char* verb,
                const Streams& streams);

/// Writes a file that did not exist, "stem.ext", "stem #2.ext" and so on in `folder`; its path, ""
/// when it cannot be written.
std::string writeNewFile(const std::string& folder, const std::string& stem,
                         const std::string& extension, std::string_view content);

/// "host:port", an IPv6 host in brackets; `defaultPort` where none is given.  False when it is
/// neither.
bool parseEndpoint(std::string_view text, std::optional<std::uint16_t> defaultPort,
                   std::string& host, std::uint16_t& port);

/// "user:password" as one text.
struct Credentials {
  std::string user;
  std::string password;
};
/// Reads "user:password" from the first line of a file; nothing, with `error` set, when it is not
/// there, or when others than the file's owner can read it.
std::optional<Credentials> readCredentials(const std::string& path, std::string& error);

/// Text for a terminal: control characters and octets that are not UTF-8 show as "\xNN".
[[nodiscard]] std::string printable(std::string_view text);

/// "1 octet", "2 octets".
[[nodiscard]] std::string octetCount(std::uint64_t octets);

/// Octets as base64 without line breaks, and back.  [RFC 4648 4]
[[nodiscard]] std::string toBase64(std::string_view octets);
[[nodiscard]] std::optional<std::string> fromBase64(std::string_view text);

/// A file of the process's own that goes away with the object.
class TemporaryFile {
 public:
  /// Writes `content` to a new file that only its owner can read; `path` is empty when that fails.
  explicit TemporaryFile(std::string_view content);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();
  [[nodiscard]] const std::string& path() const noexcept { return path_; }

 private:
  std::string path_;
};

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_COMMAND_H
