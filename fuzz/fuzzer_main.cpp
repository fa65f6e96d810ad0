// One target, chosen when the program is built, under libFuzzer.
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  mmsbrix::fuzz::noteInput({data, size});
  mmsbrix::fuzz::MMSBRIX_FUZZ_TARGET({data, size});
  return 0;
}
