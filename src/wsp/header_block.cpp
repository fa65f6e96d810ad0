#include "wsp/header_block.h"

#include <new>
#include <utility>

#include "wsp/wsp_header_list.h"

namespace mmsbrix {
namespace {

std::vector<HeaderProblem> problemsOf(std::vector<WapStack::HeaderFault>&& faults) {
  std::vector<HeaderProblem> problems;
  problems.reserve(faults.size());
  for (WapStack::HeaderFault& fault : faults) {
    problems.push_back({fault.position, std::move(fault.name), std::move(fault.reason)});
  }
  return problems;
}

}  // namespace

DecodedHeaders decodeHeaderBlock(const std::uint8_t* octets, std::size_t size, HeaderLists lists) {
  WapStack::Message_header block;
  Reader in{Octets(octets, size)};
  DecodedHeaders decoded;
  decoded.problems = problemsOf(block.decodeFromFrame(in, lists == HeaderLists::joined
                                                              ? WapStack::RepeatedHeaders::joined
                                                              : WapStack::RepeatedHeaders::kept));
  decoded.fields.reserve(block.headers().size());
  for (const WapStack::Header& header : block.headers()) {
    decoded.fields.push_back({header.name(), header.value(), header.page()});
  }
  return decoded;
}

EncodedHeaders encodeHeaderBlock(const std::vector<HeaderField>& fields, EncodingVersion version) {
  WapStack::Message_header block;
  for (const HeaderField& field : fields) block.add({field.name, field.value, field.page});
  Writer out;
  EncodedHeaders encoded;
  encoded.problems = problemsOf(block.encodeToFrame(
      out, WapStack::HeaderEncodingFilter(static_cast<WapStack::Version>(version))));
  if (out.failed()) throw std::bad_alloc();  // or headers would be missing
  encoded.octets.assign(out.written().begin(), out.written().end());
  return encoded;
}

std::string printHeader(const HeaderField& field) {
  return WapStack::Header(field.name, field.value, field.page).print();
}

}  // namespace mmsbrix
