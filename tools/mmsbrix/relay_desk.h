// What a relay does with a submission whichever way it came: judges the message, stores it, answers
// as it is told, and keeps a record.
#ifndef MMSBRIX_TOOLS_RELAY_DESK_H
#define MMSBRIX_TOOLS_RELAY_DESK_H

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "relay_server.h"

namespace mmsbrix::tool {

/// An answer in the words of HTTP, which WSP has too.
struct RelayAnswer {
  unsigned httpStatus = 200;
  std::string contentType;
  std::vector<std::uint8_t> body;
  const char* extraHeader = nullptr;
  std::string extraValue;
};

/// May be used by several threads at once.
class RelayDesk {
 public:
  /// Finds the value of a request's header by its name, "" without one.
  using HeaderOf = std::function<std::string(const char* name)>;

  /// `options` must outlive it.
  explicit RelayDesk(const RelayOptions& options) : options_(options) {}

  /// Answers the request in `record`, whose method, target and body are set, and completes the
  /// record.  `tooLarge`: there was a body, of more octets than the relay takes.
  RelayAnswer answer(RelayExchange& record, const HeaderOf& headerOf, bool tooLarge);
  /// Tells the host of an exchange that is over.
  void tell(const RelayExchange& record);
  /// The last exchanges that were answered, oldest first.
  [[nodiscard]] std::vector<RelayExchange> exchanges() const;

 private:
  RelayAnswer decide(RelayExchange& record, const HeaderOf& headerOf, bool tooLarge);
  RelayAnswer answerToPdu(RelayExchange& record, const HeaderOf& headerOf);
  RelayAnswer answerToGet(RelayExchange& record);
  RelayAnswer pduAnswer(std::vector<std::uint8_t> pdu) const;
  void deliver(RelayExchange& record, const HeaderOf& headerOf);
  void keep(const RelayExchange& record);

  const RelayOptions& options_;
  std::atomic<std::uint64_t> lastNumber_{0};
  std::atomic<std::uint64_t> lastMessage_{0};
  mutable std::mutex mutex_;  // guards kept_ and waiting_
  std::deque<RelayExchange> kept_;
  std::deque<RelayExchange> waiting_;  // accepted messages, which can be fetched
  std::mutex callbackMutex_;           // held while the host is told
};

/// ASCII letters in any case are the same.
[[nodiscard]] bool equalsIgnoringCase(std::string_view a, std::string_view b);
/// A target for the log: whole URLs lose user name and password.
[[nodiscard]] std::string withoutCredentials(std::string target);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_RELAY_DESK_H
