#include "smil/smilmedia.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <span>
#include <utility>

#include "platform/files.h"

namespace {

// An uninitialised buffer of that many octets with the zero behind them; null for a size that no
// content can have, and without memory.
std::unique_ptr<unsigned char[]> newBuffer(std::uint64_t octets) noexcept {
  if (octets >= static_cast<std::uint64_t>(std::numeric_limits<int>::max())) return nullptr;
  std::unique_ptr<unsigned char[]> buffer(
      new (std::nothrow) unsigned char[static_cast<std::size_t>(octets) + 1]);
  if (buffer != nullptr) buffer[static_cast<std::size_t>(octets)] = 0;
  return buffer;
}

// Fills `buffer` from the stream's position; what cannot be read is zero.
bool readStream(IStream& stream, std::span<unsigned char> buffer) {
  while (!buffer.empty()) {
    mmsbrix::StreamOctets done = 0;
    const auto wanted = static_cast<mmsbrix::StreamOctets>(buffer.size());
    const bool failed = stream.Read(buffer.data(), wanted, &done) < 0;
    if (failed || done == 0 || done > wanted) {
      std::memset(buffer.data(), 0, buffer.size());
      return false;
    }
    buffer = buffer.subspan(done);
  }
  return true;
}

}  // namespace

CSMILMedia::CSMILMedia() = default;
CSMILMedia::CSMILMedia(const char* tag) : CSMILNode(tag) {}

CSMILMedia::CSMILMedia(const CSMILMedia& other) : CSMILNode(other), CSMILTimingAttr(other) {
  PutContent(other.content_.get(), other.length_);
  // A copy without the content would be another element.
  if (other.content_ != nullptr && content_ == nullptr) throw std::bad_alloc();
}

CSMILMedia& CSMILMedia::operator=(const CSMILMedia& other) {
  if (this == &other) return *this;
  // By way of a copy: `other` may be one of this node's own descendants.
  CSMILMedia copy(other);
  CSMILNode::operator=(copy);
  std::swap(content_, copy.content_);
  std::swap(length_, copy.length_);
  return *this;
}

CSMILMedia::~CSMILMedia() = default;

CSMILAttr* CSMILMedia::FindAttribute(const char* name) {
  return CSMILNode::FindAttribute(name);
}

void CSMILMedia::AddAttribute(CSMILAttr* attr) {
  CSMILNode::AddAttribute(attr);
}

bool CSMILMedia::RemoveAttribute(const char* name) {
  return CSMILNode::RemoveAttribute(name);
}

bool CSMILMedia::PutContent(const void* data, int len) {
  std::unique_ptr<unsigned char[]> copy;
  if (data != nullptr && len >= 0) copy = newBuffer(static_cast<std::uint64_t>(len));
  if (copy != nullptr) std::memcpy(copy.get(), data, static_cast<std::size_t>(len));
  length_ = copy != nullptr ? len : 0;
  content_ = std::move(copy);
  return true;
}

bool CSMILMedia::Load(const char* path) {
  PutContent(nullptr, 0);
  if (path == nullptr) return true;
  auto file = mmsbrix::platform::InputFile::open(path);
  if (!file) return false;
  auto buffer = newBuffer(file->size());
  if (buffer == nullptr) return false;
  const auto octets = static_cast<std::size_t>(file->size());
  const bool complete = file->read({buffer.get(), octets});
  content_ = std::move(buffer);
  length_ = static_cast<int>(octets);
  return complete;
}

bool CSMILMedia::Load(IStream* stream) {
  PutContent(nullptr, 0);
  if (stream == nullptr) return true;
  constexpr unsigned kWithoutName = 1;
  constexpr unsigned kFromBeginning = 0;
  STATSTG status{};
  if (stream->Stat(&status, kWithoutName) < 0) return false;
  auto buffer = newBuffer(status.cbSize.QuadPart);
  if (buffer == nullptr) return false;
  LARGE_INTEGER beginning{};
  if (stream->Seek(beginning, kFromBeginning, nullptr) < 0) return false;
  const auto octets = static_cast<std::size_t>(status.cbSize.QuadPart);
  const bool complete = readStream(*stream, {buffer.get(), octets});
  content_ = std::move(buffer);
  length_ = static_cast<int>(octets);
  return complete;
}

bool CSMILMedia::Save(const char* path) const {
  if (content_ == nullptr || path == nullptr) return false;
  return mmsbrix::platform::writeWholeFile(
             path, {content_.get(), static_cast<std::size_t>(length_)}) == 0;
}

bool CSMILMedia::Save(IStream* stream) const {
  if (content_ == nullptr || stream == nullptr) return false;
  const auto octets = static_cast<mmsbrix::StreamOctets>(length_);
  mmsbrix::StreamOctets done = 0;
  return stream->Write(content_.get(), octets, &done) >= 0 && done == octets;
}
