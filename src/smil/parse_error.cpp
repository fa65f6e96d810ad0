#include "smil/parse_error.h"

#include <memory>
#include <mutex>
#include <utility>

#include "platform/alert.h"
#include "smil/report_parse_error.h"

namespace mmsbrix {
namespace {

// Never destroyed: other threads may read until the process ends.
struct HandlerHolder {
  std::mutex mutex;
  std::shared_ptr<const ParseErrorHandler> handler;
};

HandlerHolder& holder() {
  static HandlerHolder& instance = *new HandlerHolder;
  return instance;
}

}  // namespace

void setParseErrorHandler(ParseErrorHandler handler) {
  std::shared_ptr<const ParseErrorHandler> replacement;
  if (handler) replacement = std::make_shared<const ParseErrorHandler>(std::move(handler));
  const std::lock_guard lock(holder().mutex);
  std::swap(holder().handler, replacement);
}

void reportParseError(const platform::XmlError& error) {
  const std::string caption = "Error on line " + std::to_string(error.line) + ", position " +
                              std::to_string(error.position);
  std::shared_ptr<const ParseErrorHandler> handler;
  {
    const std::lock_guard lock(holder().mutex);
    handler = holder().handler;
  }
  if (handler == nullptr) {
    platform::showAlert(caption, error.reason);
    return;
  }
  try {
    (*handler)(caption, error.reason);
  } catch (...) {  // NOLINT(bugprone-empty-catch): nothing is thrown across the library's functions
  }
}

}  // namespace mmsbrix
