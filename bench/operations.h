// What is measured: each operation once, for clocks and for instruction counts alike.
#ifndef MMSBRIX_BENCH_OPERATIONS_H
#define MMSBRIX_BENCH_OPERATIONS_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace mmsbrix::bench {

struct Operation {
  std::string name;
  std::size_t octets;         ///< of the message or text that it works on
  std::function<void()> run;  ///< once
};

/// Copies of memory, decoding, encoding, reading as views, copying a message, lookups and SMIL.
std::vector<Operation> operationsInMemory();
/// Loading, saving and extraction, which go to files in the temporary folder.
std::vector<Operation> operationsOnFiles();

}  // namespace mmsbrix::bench

#endif  // MMSBRIX_BENCH_OPERATIONS_H
