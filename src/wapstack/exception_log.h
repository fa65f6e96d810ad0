// The stack's exception log: what went wrong inside, one entry after the other in the file
// "exceptions.log".  Nothing here throws; a log that cannot be written is none.
#ifndef MMSBRIX_WAPSTACK_EXCEPTION_LOG_H
#define MMSBRIX_WAPSTACK_EXCEPTION_LOG_H

#include <string>
#include <string_view>

namespace mmsbrix {

/// Above this size, in octets, the log is put aside as "exceptions.log.old" and begun anew.
inline constexpr unsigned kMaxExceptionLog = 1u << 20;

/// The folder (UTF-8) of the log from now on; empty for no log.  Until it is set the log stands in
/// the user's folder for such things.
void useExceptionLogFolder(std::string folder);

/// Appends an entry about a place in a source.
void logException(std::string_view source, unsigned line, std::string_view text) noexcept;
/// The same for an assertion about the input, and for one after which something was given up.
void logAssertion(std::string_view source, unsigned line, std::string_view text) noexcept;
void logCriticalAssertion(std::string_view source, unsigned line, std::string_view text) noexcept;

}  // namespace mmsbrix

#endif  // MMSBRIX_WAPSTACK_EXCEPTION_LOG_H
