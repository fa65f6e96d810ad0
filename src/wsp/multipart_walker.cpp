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
  const Reader::Place begin = in_.place();
  item.offset = begin.position;
  const auto headersLength = readUintvar(in_);
  const auto dataLength = headersLength ? readUintvar(in_) : headersLength;
  if (!dataLength) {
    in_.returnTo(begin);
    broken_ = true;
    return false;
  }
  item.statedHeaders = *headersLength;
  item.statedData = *dataLength;
  item.headersOffset = in_.position();
  Reader headers = in_.sub(*headersLength);
  item.contentType = headers.take(contentTypeSize(headers));
  item.headers = headers.rest();
  item.dataOffset = in_.position();
  item.data = in_.take(*dataLength);
  return true;
}

bool MultipartWalker::skip(std::size_t& dataOctets) noexcept {
  if (broken_ || in_.atEnd()) return false;
  const auto headersLength = readUintvar(in_);
  const auto dataLength = headersLength ? readUintvar(in_) : headersLength;
  if (!dataLength) {
    broken_ = true;
    return false;
  }
  in_.skip(*headersLength);
  dataOctets = in_.take(*dataLength).size();
  return true;
}

}  // namespace mmsbrix
