// The codings of WSP: primitives, header blocks, capability blocks and multipart bodies.
#include <array>
#include <memory>
#include <string>

#include "mms/decoder.h"
#include "targets.h"
#include "wapstack/wsp_capabilities.h"
#include "wsp/header_block.h"
#include "wsp/multipart_entries.h"
#include "wsp/wap_mms_shared.h"
#include "wsp/wsp_header_coding.h"

namespace mmsbrix::fuzz {
namespace {

using namespace WapStack;

template <class Kind>
std::unique_ptr<WapBase> make() {
  return std::make_unique<Kind>();
}
constexpr auto kKinds = std::to_array<std::unique_ptr<WapBase> (*)()>(
    {make<UintvarInteger>,   make<ShortInteger>,
     make<LongInteger>,      make<IntegerValue>,
     make<ValueLength>,      make<TextString>,
     make<QuotedString>,     make<TokenText>,
     make<ExtensionMedia>,   make<UriValue>,
     make<NoValue>,          make<TextValue>,
     make<UntypedValue>,     make<ConstrainedEncoding>,
     make<ConstrainedMedia>, make<ConstrainedCharset>,
     make<FieldName>,        make<WellKnownCharset>,
     make<VersionValue>,     make<QValue>,
     make<DateValue>});

// Octets of a value to text and back, twice: what was written once is written again.
void value(std::unique_ptr<WapBase> (*create)(), Input input) {
  const auto decoded = create();
  Reader in(input);
  (void)decoded->isKind(in);
  require(in.position() == 0, "asking for the kind consumes nothing");
  if (!decoded->decodeFromFrame(in)) return;
  require(in.position() <= input.size(), "a value ends within its octets");
  (void)decoded->print();
  // The wire has no form for a text that begins with what quotes others, and quotation marks around
  // a text are those of HTTP.
  const std::string_view text = decoded->getText();
  if (text.starts_with(static_cast<char>(kTextQuote)) || text.starts_with('"')) return;
  Writer first;
  if (!decoded->encodeToFrame(first)) {
    require(first.size() == 0, "a value that is refused appends nothing");
    return;
  }
  const auto again = decoded->clone();
  Reader back(first.written());
  if (!again->decodeFromFrame(back)) return;  // the empty text of a number, say
  Writer second;
  require(again->encodeToFrame(second), "a value that was written can be written again");
  require(asText(first.written()) == asText(second.written()), "values settle after one writing");
}

// A number as one coding writes it is the number that is read.
template <class Number, class Write, class Read>
void number(Number value, Write write, Read read) {
  Writer out;
  write(out, value);
  Reader in(out.written());
  const auto got = read(in);
  require(got && *got == value && in.atEnd(), "a number reads back");
}

}  // namespace

void wspPrimitives(Input input) {
  if (input.empty()) return;
  const std::size_t choice = input[0];
  const Input octets = input.subspan(1);
  value(kKinds[choice % kKinds.size()], octets);

  Reader in(octets);
  const std::size_t size = fieldSize(in);
  require(in.position() == 0 && (size > 0 || octets.empty() || octets[0] == kLengthQuote),
          "a field that is there takes an octet at least");
  if (const auto read = readUintvar(in)) number(*read, writeUintvar, readUintvar);
  if (const auto read = readInteger(in)) number(*read, writeInteger, readInteger);
  if (const auto read = readLongInteger(in)) number(*read, writeLongInteger, readLongInteger);
  if (const auto read = readValueLength(in)) number(*read, writeValueLength, readValueLength);
  const std::string text(readTextString(in));
  require(in.position() <= octets.size(), "the primitives stay within their octets");
  Writer out;
  writeTextString(out, text);
  require(out.size() == textStringSize(text), "a text takes what was foretold");
}

void wspHeaders(Input input) {
  if (input.empty()) return;
  const auto version = static_cast<EncodingVersion>(input[0] % 5);
  const HeaderLists lists = (input[0] & 0x80) != 0 ? HeaderLists::split : HeaderLists::joined;
  const Input block = input.subspan(1);
  const DecodedHeaders first = decodeHeaderBlock(block.data(), block.size(), lists);
  for (const HeaderProblem& problem : first.problems) {
    require(problem.position <= block.size() && !problem.reason.empty(),
            "a problem has its place and reason");
  }
  for (const HeaderField& field : first.fields) (void)printHeader(field);
  const EncodedHeaders written = encodeHeaderBlock(first.fields, version);
  const DecodedHeaders second =
      decodeHeaderBlock(written.octets.data(), written.octets.size(), lists);
  require(second.problems.empty(), "what is written can be read");
  const EncodedHeaders again = encodeHeaderBlock(second.fields, version);
  require(again.problems.empty(), "what was read from written octets can be written");
  const DecodedHeaders third = decodeHeaderBlock(again.octets.data(), again.octets.size(), lists);
  require(second.fields == third.fields, "headers that are written read back equal");
}

void wspCapabilities(Input input) {
  using session::Capabilities;
  if (input.empty()) return;
  const std::size_t split = std::min<std::size_t>(input[0], input.size() - 1);
  const auto proposed = session::decodeCapabilities(input.subspan(1, split));
  const auto answered = session::decodeCapabilities(input.subspan(1 + split));
  for (const auto& block : {proposed, answered}) {
    if (!block) continue;
    Writer out;
    session::encodeCapabilities(*block, out);
    const auto again = session::decodeCapabilities(out.written());
    require(again && again->clientSduSize == block->clientSduSize &&
                again->serverSduSize == block->serverSduSize &&
                again->protocolOptions == block->protocolOptions &&
                again->methodMor == block->methodMor && again->pushMor == block->pushMor,
            "capabilities that are written read back equal");
  }
  if (!proposed || !answered) return;
  const auto holds = session::agree(*proposed, *answered);
  if (!holds) return;
  // Where the server did not understand a proposal, what holds without one stays.
  const auto most = [&](unsigned id, std::optional<std::uint8_t> wanted, std::uint8_t standing) {
    const bool understood = (answered->unrecognised >> id & 1U) == 0;
    return understood ? wanted.value_or(standing) : standing;
  };
  const session::Agreement standing;
  require(holds->methodMor <= most(0x03, proposed->methodMor, standing.methodMor) &&
              holds->pushMor <= most(0x04, proposed->pushMor, standing.pushMor),
          "nobody agrees to more than was proposed");
  constexpr unsigned kReserved = 0x07;
  require((holds->protocolOptions & ~proposed->protocolOptions.value_or(0) & ~kReserved) == 0,
          "no facility is agreed on that was not proposed");
}

void wspMultipart(Input input) {
  CMMPart root;
  ItemBudget budget;
  decodeMultipart(input, root, budget);
  std::size_t content = 0;
  for (unsigned i = 0; i < root.ChildCount(); ++i) {
    content += static_cast<std::size_t>(root.Child(i)->GetContentLen());
  }
  require(content <= input.size(), "contents are no more than the body");

  QuorvexMms::MultipartEntryList list;
  Reader in(input);
  const bool whole = list.decodeFromFrame(in);
  for (const auto& entry : list.entries()) (void)entry.open();
  if (!whole) return;
  Writer out;
  if (!list.encodeToFrame(out)) return;  // an entry whose content type could not be read
  QuorvexMms::MultipartEntryList again;
  Reader back(out.written());
  require(again.decodeFromFrame(back), "a body that is written can be read");
  require(again.entries().size() == list.entries().size(), "all entries read back");
  for (std::size_t i = 0; i < list.entries().size(); ++i) {
    require(list.entries()[i].data() == again.entries()[i].data(), "contents read back equal");
  }
}

}  // namespace mmsbrix::fuzz
