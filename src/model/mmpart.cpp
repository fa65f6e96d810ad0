#include "model/mmpart.h"

#include <cstring>
#include <limits>
#include <memory>
#include <utility>

#include "model/content_block.h"
#include "platform/ascii.h"
#include "platform/files.h"
#include "platform/text.h"

namespace {

// What every part of no octets points at: it is neither written nor freed.
unsigned char noOctets[1];

void releaseContent(unsigned char* content) noexcept {
  if (content != noOctets) delete[] content;
}

struct ContentDeleter {
  void operator()(unsigned char* content) const noexcept { releaseContent(content); }
};
using Content = std::unique_ptr<unsigned char[], ContentDeleter>;

// Room for `octets` octets, with a zero behind it.
Content newContent(std::size_t octets) {
  if (octets == 0) return Content(noOctets);
  Content content(new unsigned char[octets + 1]);
  content[octets] = 0;
  return content;
}

}  // namespace

CMMPart::CMMPart() = default;

CMMPart::CMMPart(const CMMPart& other) : headers_(other.headers_), children_(other.children_) {
  SetContent(other.content_, other.length_);
}

CMMPart::CMMPart(CMMPart&& other) noexcept
    : headers_(std::move(other.headers_)),
      content_(std::exchange(other.content_, nullptr)),
      length_(std::exchange(other.length_, 0)),
      blockOffset_(std::exchange(other.blockOffset_, 0)),
      children_(std::move(other.children_)) {}

CMMPart& CMMPart::operator=(const CMMPart& other) {
  // By way of a copy: `other` may be one of this part's own children.
  if (this != &other) *this = CMMPart(other);
  return *this;
}

CMMPart& CMMPart::operator=(CMMPart&& other) noexcept {
  if (this == &other) return *this;
  CMMPart taken(std::move(other));
  std::swap(headers_, taken.headers_);
  std::swap(content_, taken.content_);
  std::swap(length_, taken.length_);
  std::swap(blockOffset_, taken.blockOffset_);
  std::swap(children_, taken.children_);
  return *this;
}

CMMPart::~CMMPart() {
  replaceContent(nullptr, 0);
}

void CMMPart::replaceContent(unsigned char* content, int length) noexcept {
  unsigned char* const old = std::exchange(content_, content);
  length_ = length;
  if (const std::uint32_t offset = std::exchange(blockOffset_, 0); offset != 0) {
    reinterpret_cast<mmsbrix::ContentBlock*>(old - offset)->release();
  } else {
    releaseContent(old);
  }
}

bool CMMPart::SetContent(const void* data, int len) {
  if (data == nullptr) {
    replaceContent(nullptr, 0);
    return true;
  }
  const std::size_t octets =
      len < 0 ? std::strlen(static_cast<const char*>(data)) : static_cast<std::size_t>(len);
  Content copy = newContent(octets);
  std::memcpy(copy.get(), data, octets);
  replaceContent(copy.release(), static_cast<int>(octets));
  return true;
}

void CMMPart::ShareContent(mmsbrix::ContentBlock& block, std::size_t offset, int len) {
  unsigned char* const content = block.octets() + offset;
  const auto distance =
      static_cast<std::size_t>(content - reinterpret_cast<unsigned char*>(&block));
  if (len == 0 || distance > std::numeric_limits<std::uint32_t>::max()) {
    SetContent(content, len);
    return;
  }
  block.hold();
  replaceContent(content, len);
  blockOffset_ = static_cast<std::uint32_t>(distance);
}

bool CMMPart::Load(const char* path) {
  auto file = mmsbrix::platform::InputFile::open(mmsbrix::orEmpty(path));
  if (!file) return false;
  if (file->size() >= static_cast<std::uint64_t>(std::numeric_limits<int>::max())) return false;
  const auto octets = static_cast<std::size_t>(file->size());
  Content buffer = newContent(octets);
  const bool complete = file->read({buffer.get(), octets});
  replaceContent(buffer.release(), static_cast<int>(octets));
  return complete;
}

bool CMMPart::Save(const char* path) const {
  if (content_ == nullptr) return false;
  return mmsbrix::platform::writeWholeFile(mmsbrix::orEmpty(path),
                                           {content_, static_cast<std::size_t>(length_)}) == 0;
}

void CMMPart::AddChild(const CMMPart* child) {
  children_.Add(child);
}

CMMPart* CMMPart::NewChild() {
  return children_.AddNew();
}

void CMMPart::ReserveChildren(unsigned int count) {
  children_.Reserve(count);
}

unsigned int CMMPart::ChildCount() const noexcept {
  return children_.Count();
}

CMMPart* CMMPart::FirstChild() noexcept {
  return children_.First();
}

CMMPart* CMMPart::NextChild() noexcept {
  return children_.Next();
}

const CMMPart* CMMPart::Child(unsigned int index) const noexcept {
  return index < children_.Count() ? children_.begin() + index : nullptr;
}

CMMPart* CMMPart::FindChild(const CMMHdr* header) noexcept {
  for (CMMPart& child : children_) {
    const CMMHdr* found = child.headers_.Find(header->Get());
    if (found != nullptr && mmsbrix::equalsIgnoringCase(found->Value(), header->Value())) {
      return &child;
    }
  }
  return nullptr;
}

void CMMPart::Clear() noexcept {
  replaceContent(nullptr, 0);
  headers_.Clear();
  children_.Clear();
}
