// HTTP answers that carry an m-send-conf, written out.
#ifndef MMSBRIX_TESTS_SUPPORT_MMS_HTTP_H
#define MMSBRIX_TESTS_SUPPORT_MMS_HTTP_H

#include <string>

namespace mmsbrix::test {

using namespace std::string_literals;

/// m-send-conf, transaction T1, version 1.0, Ok, message id m@r.
inline const std::string kSendConfOk = "\x8C\x81\x98T1\0\x8D\x90\x92\x80\x8Bm@r\0"s;
inline constexpr char kMmsType[] = "application/vnd.wap.mms-message";

/// An answer with a Content-Length; `headers` are further lines, each with its line end.
inline std::string httpAnswer(const std::string& body, const std::string& contentType = kMmsType,
                              const std::string& status = "200 OK",
                              const std::string& headers = "") {
  return "HTTP/1.1 " + status + "\r\n" + headers +
         (contentType.empty() ? "" : "Content-Type: " + contentType + "\r\n") +
         "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_MMS_HTTP_H
