// What fuzzing feeds: each target takes any octets, and ends the process when a promise does not
// hold.  The same functions are run by libFuzzer and, over the corpora, by the ordinary tests.
#ifndef MMSBRIX_FUZZ_TARGETS_H
#define MMSBRIX_FUZZ_TARGETS_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace mmsbrix::fuzz {

using Input = std::span<const std::uint8_t>;

void pduDecode(Input input);        ///< decoder
void pduRoundTrip(Input input);     ///< decoder, encoder, decoder
void inspector(Input input);        ///< inspector, held against the decoder
void wspPrimitives(Input input);    ///< codings and primitive values
void contentType(Input input);      ///< content types and part headers of the codec
void wspHeaders(Input input);       ///< header block to text and back
void wspCapabilities(Input input);  ///< capability block
void wspMultipart(Input input);     ///< multipart body, both readers
void smil(Input input);             ///< reader, writer, reader
void extraction(Input input);       ///< every part into a scratch folder
void httpReply(Input input);        ///< answer of a relay, through a stub of the HTTP seam
void wtpDatagrams(Input input);     ///< endpoint under a script of datagrams, requests and time
void wspSession(Input input);       ///< client session under the same
void wspServer(Input input);        ///< server sessions under the same
void composeJson(Input input);      ///< description of `compose`

struct Target {
  std::string_view name;
  void (*run)(Input input);
};
/// The targets of this program.
[[nodiscard]] std::span<const Target> targets();

/// Inputs that our own encoders write, for the target of that name.
[[nodiscard]] std::vector<std::vector<std::uint8_t>> encodedSeeds(std::string_view target);

/// Remembers what is being run, for the words of a failure.
void noteInput(Input input);
/// Ends the process, having said why and on which input, unless `holds`.
void require(bool holds, const char* promise);

/// The lines of a corpus, "name: octets", octets as hex or 'text'; "#" begins a comment line.
struct Seed {
  std::string name;
  std::vector<std::uint8_t> octets;
};
[[nodiscard]] std::vector<Seed> readCorpus(const std::string& path);

}  // namespace mmsbrix::fuzz

#endif  // MMSBRIX_FUZZ_TARGETS_H
