#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "support/hex.h"
#include "targets.h"

namespace mmsbrix::fuzz {
namespace {
Input current;
}

void noteInput(Input input) {
  current = input;
}

void require(bool holds, const char* promise) {
  if (holds) return;
  std::fprintf(stderr, "broken promise: %s\non %s\n", promise, test::toHex(current).c_str());
  std::abort();
}

std::vector<Seed> readCorpus(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error(path + ": cannot be read");
  std::vector<Seed> seeds;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    const std::size_t colon = line.find(": ");
    if (colon == std::string::npos) throw std::runtime_error(path + ": no name in \"" + line + '"');
    seeds.push_back({line.substr(0, colon), test::hex(line.substr(colon + 2))});
  }
  return seeds;
}

}  // namespace mmsbrix::fuzz
