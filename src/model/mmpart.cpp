#include "model/mmpart.h"

#include <cstring>
#include <limits>
#include <utility>

#include "platform/ascii.h"
#include "platform/files.h"
#include "platform/text.h"

CMMPart::CMMPart() = default;

CMMPart::CMMPart(const CMMPart& other) : headers_(other.headers_), children_(other.children_) {
  SetContent(other.content_.get(), other.length_);
}

CMMPart::CMMPart(CMMPart&& other) noexcept
    : headers_(std::move(other.headers_)),
      content_(std::move(other.content_)),
      length_(std::exchange(other.length_, 0)),
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
  std::swap(children_, taken.children_);
  return *this;
}

CMMPart::~CMMPart() = default;

bool CMMPart::SetContent(const void* data, int len) {
  if (data == nullptr) {
    content_.reset();
    length_ = 0;
    return true;
  }
  const std::size_t octets =
      len < 0 ? std::strlen(static_cast<const char*>(data)) : static_cast<std::size_t>(len);
  std::unique_ptr<unsigned char[]> copy(new unsigned char[octets + 1]);
  std::memcpy(copy.get(), data, octets);
  copy[octets] = 0;
  content_ = std::move(copy);
  length_ = static_cast<int>(octets);
  return true;
}

bool CMMPart::Load(const char* path) {
  auto file = mmsbrix::platform::InputFile::open(mmsbrix::orEmpty(path));
  if (!file) return false;
  if (file->size() >= static_cast<std::uint64_t>(std::numeric_limits<int>::max())) return false;
  const auto octets = static_cast<std::size_t>(file->size());
  std::unique_ptr<unsigned char[]> buffer(new unsigned char[octets + 1]);
  const bool complete = file->read({buffer.get(), octets});
  buffer[octets] = 0;
  content_ = std::move(buffer);
  length_ = static_cast<int>(octets);
  return complete;
}

bool CMMPart::Save(const char* path) const {
  if (content_ == nullptr) return false;
  return mmsbrix::platform::writeWholeFile(
             mmsbrix::orEmpty(path), {content_.get(), static_cast<std::size_t>(length_)}) == 0;
}

void CMMPart::AddChild(const CMMPart* child) {
  children_.Add(child);
}

CMMPart* CMMPart::NewChild() {
  return children_.AddNew();
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
  return index < children_.Count() ? &*(children_.begin() + index) : nullptr;
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
  content_.reset();
  length_ = 0;
  headers_.Clear();
  children_.Clear();
}
