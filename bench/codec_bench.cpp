// Clocks of everything but submissions.
#include <benchmark/benchmark.h>

#include "operations.h"

int main(int argc, char** argv) {
  using mmsbrix::bench::Operation;
  for (auto operations :
       {mmsbrix::bench::operationsInMemory(), mmsbrix::bench::operationsOnFiles()}) {
    for (Operation& operation : operations) {
      const auto octets = static_cast<double>(operation.octets);
      benchmark::RegisterBenchmark(operation.name.c_str(), [run = std::move(operation.run),
                                                            octets](benchmark::State& state) {
        for (auto _ : state) run();
        state.counters["octets"] = octets;
      });
    }
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
