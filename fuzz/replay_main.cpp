// Runs the targets over their corpora without a fuzzer, and writes corpora out and in:
//   replay TARGET CORPUS.hex          every seed, every prefix of it, and a few changes to it
//   replay TARGET CORPUS.hex unpack FOLDER   one file for each seed
//   replay TARGET CORPUS.hex pack FILE...    lines for files that are not among the seeds
#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <set>

#include "targets.h"

namespace {

using namespace mmsbrix::fuzz;
using Octets = std::vector<std::uint8_t>;

std::vector<Seed> seedsOf(const Target& target, const std::string& path) {
  std::vector<Seed> seeds = readCorpus(path);
  int number = 0;
  for (Octets& octets : encodedSeeds(target.name)) {
    seeds.push_back({"encoded-" + std::to_string(++number), std::move(octets)});
  }
  return seeds;
}

// A buffer of exactly the size, so that the sanitizers see any step outside it.
void run(const Target& target, const Octets& octets) {
  const Octets exact(octets);
  noteInput(exact);
  target.run(exact);
}

std::size_t replay(const Target& target, const std::vector<Seed>& seeds) {
  constexpr std::size_t kVariants = 64;
  constexpr auto kOctets = std::to_array<std::uint8_t>({0x00, 0x1F, 0x7F, 0x80, 0xFF});
  std::size_t runs = 0;
  for (const Seed& seed : seeds) {
    std::printf("%s\n", seed.name.c_str());
    std::fflush(stdout);
    run(target, seed.octets);
    ++runs;
    const std::size_t step = std::max<std::size_t>(1, seed.octets.size() / kVariants);
    for (std::size_t i = 0; i < seed.octets.size(); i += step) {
      run(target, {seed.octets.begin(), seed.octets.begin() + static_cast<std::ptrdiff_t>(i)});
      Octets changed = seed.octets;
      changed[i] = kOctets[runs % kOctets.size()];
      run(target, changed);
      runs += 2;
    }
  }
  return runs;
}

void unpack(const std::vector<Seed>& seeds, const std::string& folder) {
  for (const Seed& seed : seeds) {
    std::ofstream out(folder + "/" + seed.name, std::ios::binary);
    out.write(reinterpret_cast<const char*>(seed.octets.data()),
              static_cast<std::streamsize>(seed.octets.size()));
  }
}

void pack(const std::vector<Seed>& seeds, std::span<char*> files) {
  std::set<Octets> known;
  for (const Seed& seed : seeds) known.insert(seed.octets);
  for (const char* path : files) {
    std::ifstream in(path, std::ios::binary);
    const Octets octets{std::istreambuf_iterator<char>(in), {}};
    if (!known.insert(octets).second) continue;
    const std::string name(path);
    std::printf("%s:", name.substr(name.rfind('/') + 1).substr(0, 12).c_str());
    for (const std::uint8_t octet : octets) std::printf(" %02X", octet);
    std::printf("\n");
  }
}

}  // namespace

int main(int count, char** arguments) {
  const std::span<char*> all(arguments, static_cast<std::size_t>(count));
  if (all.size() < 3) {
    std::fprintf(stderr, "usage: %s TARGET CORPUS [unpack FOLDER | pack FILE...]\n", all[0]);
    return 2;
  }
  for (const Target& target : targets()) {
    if (target.name != all[1]) continue;
    const std::vector<Seed> seeds = seedsOf(target, all[2]);
    const std::string_view verb = all.size() > 3 ? all[3] : "";
    if (verb == "unpack" && all.size() == 5) {
      unpack(seeds, all[4]);
    } else if (verb == "pack") {
      pack(seeds, all.subspan(4));
    } else {
      const std::size_t runs = replay(target, seeds);
      std::printf("%zu seeds, %zu inputs\n", seeds.size(), runs);
      return runs == 0 ? 1 : 0;  // a corpus that is not there tests nothing
    }
    return 0;
  }
  std::fprintf(stderr, "no target %s\n", all[1]);
  return 2;
}
