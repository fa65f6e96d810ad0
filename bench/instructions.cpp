// Instructions of the operations in memory: to be run under valgrind --tool=callgrind
// --collect-atstart=no, which writes one file for each of them.
#include <valgrind/callgrind.h>

#include "operations.h"

// With an argument, only the operations whose name begins with it.
int main(int argc, char** argv) {
  constexpr int kRuns = 4;  // bench/report.py divides by it
  for (const auto& operation : mmsbrix::bench::operationsInMemory()) {
    if (argc > 1 && !operation.name.starts_with(argv[1])) continue;
    operation.run();  // what the first run alone does is not the cost of a message
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    for (int i = 0; i < kRuns; ++i) operation.run();
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(operation.name.c_str());
  }
  return 0;
}
