#include "wsp/multipart_walker.h"

#include "wsp/content_type_reader.h"
#include "wsp/wap_mms_shared.h"

namespace mmsbrix {

MultipartWalker::MultipartWalker(Octets body) noexcept : in_(body) {
  if (in_.atEnd()) return;
  const auto count = readUintvar(in_);
  if (count) {
    announced_ = *count;
  } else {
    broken_ = true;
  }
}

bool MultipartWalker::next(MultipartItem& item) noexcept {
  if (broken_ || in_.atEnd()) return false;
  Reader in = in_;
  item.offset = in.position();
  const auto headersLength = readUintvar(in);
  const auto dataLength = headersLength ? readUintvar(in) : headersLength;
  if (!dataLength) {
    broken_ = true;
    return false;
  }
  item.statedHeaders = *headersLength;
  item.statedData = *dataLength;
  item.headersOffset = in.position();
  Reader headers = in.sub(*headersLength);
  item.contentType = headers.take(contentTypeSize(headers));
  item.headers = headers.rest();
  item.dataOffset = in.position();
  item.data = in.take(*dataLength);
  in_ = in;
  return true;
}

std::optional<std::size_t> MultipartWalker::skip() noexcept {
  if (broken_ || in_.atEnd()) return std::nullopt;
  const auto headersLength = readUintvar(in_);
  const auto dataLength = headersLength ? readUintvar(in_) : headersLength;
  if (!dataLength) {
    broken_ = true;
    return std::nullopt;
  }
  in_.skip(*headersLength);
  return in_.take(*dataLength).size();
}

}  // namespace mmsbrix
