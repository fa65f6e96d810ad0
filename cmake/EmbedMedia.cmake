# Writes a source with the content of FILES as octets.  Called with -DFILES=... -DOUTPUT=...
set(arrays "")
set(rows "")
set(index 0)
foreach(file IN LISTS FILES)
  get_filename_component(name ${file} NAME)
  file(READ ${file} content HEX)
  string(REGEX REPLACE "(..)" "0x\\1," octets "${content}")
  string(APPEND arrays "constexpr std::uint8_t kMedia${index}[] = {${octets}};\n")
  string(APPEND rows "    {\"${name}\", kMedia${index}},\n")
  math(EXPR index "${index} + 1")
endforeach()
file(WRITE ${OUTPUT}
"#include \"sample_media.h\"

#include <array>

namespace mmsbrix::tool {
namespace {

${arrays}
constexpr SampleMedia kSampleMedia[] = {
${rows}};

}  // namespace

std::span<const SampleMedia> sampleMedia() noexcept {
  return kSampleMedia;
}

}  // namespace mmsbrix::tool
")
