// A text that one thread writes through a stream while another reads it.
#ifndef MMSBRIX_TESTS_SUPPORT_SHARED_TEXT_H
#define MMSBRIX_TESTS_SUPPORT_SHARED_TEXT_H

#include <mutex>
#include <streambuf>
#include <string>

namespace mmsbrix::test {

/// A stream's buffer that another thread may read while it is written.
class SharedText : public std::streambuf {
 public:
  std::string text() {
    const std::lock_guard lock(mutex_);
    return text_;
  }

 protected:
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    const std::lock_guard lock(mutex_);
    text_.append(text, static_cast<std::size_t>(size));
    return size;
  }
  int_type overflow(int_type c) override {
    const std::lock_guard lock(mutex_);
    text_ += static_cast<char>(c);
    return c;
  }

 private:
  std::mutex mutex_;
  std::string text_;
};

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_SHARED_TEXT_H
