#include "mms/transaction_id.h"

#include <chrono>
#include <cstdio>
#include <random>

namespace mmsbrix {

std::string uniqueTransactionId() {
  std::random_device random;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
  char text[48];
  std::snprintf(text, sizeof text, "T%llX-%08X", static_cast<unsigned long long>(milliseconds),
                random());
  return text;
}

}  // namespace mmsbrix
