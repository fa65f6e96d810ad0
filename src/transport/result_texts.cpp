#include "transport/result_texts.h"

#include <algorithm>
#include <array>

#include "platform/files.h"
#include "platform/http.h"
#include "platform/resource_text.h"

namespace mmsbrix {
namespace {

struct ResultText {
  unsigned code;
  std::string_view text;
};

constexpr std::string_view kNoGateway = "Failed to connect to the gateway\n\nCheck setup.";

constexpr auto kResultTexts = std::to_array<ResultText>({
    {platform::kErrorFileNotFound, "File not found"},
    {100, "The request can be continued."},
    {101, "The server has switched protocols in an upgrade header."},
    {200, "The request completed successfully."},
    {201, "The request has been fulfilled and resulted in the creation of a new resource."},
    {202,
     "The request has been accepted for processing, but the processing has not been "
     "completed."},
    {203,
     "The returned meta information in the entity-header is not the definitive set "
     "available from the origin server."},
    {204, "The server has fulfilled the request, but there is no new information to send back."},
    {205,
     "The request has been completed, and the client program should reset the document "
     "view that caused the request to be sent to allow the user to easily initiate another "
     "input action."},
    {206, "The server has fulfilled the partial GET request for the resource."},
    {300, "The server couldn't decide what to return."},
    {301, "The requested resource has been assigned to a new permanent URI."},
    {302, "The requested resource resides temporarily under a different URI."},
    {303,
     "The response to the request can be found under a different URI and should be "
     "retrieved using a GET method on that resource."},
    {304, "The requested resource has not been modified."},
    {305, "The requested resource must be accessed through the proxy given by the location field."},
    {307, "The redirected request keeps the same verb. HTTP/1.1 behavior."},
    {400, "The request could not be processed by the server due to invalid syntax."},
    {401, "The requested resource requires user authentication."},
    {402, "Payment required"},
    {403, "The server understood the request, but is refusing to fulfill it."},
    {404, "The server has not found anything matching the requested URI."},
    {405, "The method used is not allowed."},
    {406, "No responses acceptable to the client were found."},
    {407, "Proxy authentication required."},
    {408, "The server timed out waiting for the request."},
    {409,
     "The request could not be completed due to a conflict with the current state of the "
     "resource. The user should resubmit with more information."},
    {410,
     "The requested resource is no longer available at the server, and no forwarding "
     "address is known."},
    {411, "The server refuses to accept the request without a defined content length."},
    {412,
     "The precondition given in one or more of the request header fields evaluated to "
     "false when it was tested on the server."},
    {413,
     "The server is refusing to process a request because the request entity is larger "
     "than the server is willing or able to process."},
    {414,
     "The server is refusing to service the request because the request URI is longer than "
     "the server is willing to interpret."},
    {415,
     "The server is refusing to service the request because the entity of the request is "
     "in a format not supported by the requested resource for the requested method."},
    {449, "The request should be retried after doing the appropriate action."},
    {500,
     "The server encountered an unexpected condition that prevented it from fulfilling the "
     "request."},
    {501, "The server does not support the functionality required to fulfill the request."},
    {502,
     "The server, while acting as a gateway or proxy, received an invalid response from "
     "the upstream server it accessed in attempting to fulfill the request."},
    {503, "The service is temporarily overloaded."},
    {504, "The request was timed out waiting for a gateway."},
    {505,
     "The server does not support, or refuses to support, the HTTP protocol version that "
     "was used in the request message."},
    {platform::kInternetInvalidUrl, "The URL is invalid."},
    {platform::kInternetUnrecognizedScheme,
     "The URL scheme could not be recognized or is not supported."},
    {platform::kInternetNameNotResolved, kNoGateway},
    {platform::kInternetCannotConnect, kNoGateway},
});
static_assert(std::ranges::is_sorted(kResultTexts, {}, &ResultText::code));

constexpr auto kMeanings = std::to_array<ResultText>({
    {platform::kErrorPathNotFound, "the path of the file does not exist"},
    {platform::kErrorTooManyOpenFiles, "too many files are open"},
    {platform::kErrorAccessDenied, "the file may not be read"},
    {platform::kErrorNotEnoughMemory, "there is not enough memory"},
    {platform::kErrorReadFault, "the file cannot be read"},
    {platform::kErrorInvalidParameter, "the URL is empty"},
    {platform::kErrorInsufficientBuffer, "the URL's host or path has 256 characters or more"},
    {platform::kErrorInvalidName, "the name of the file is not valid"},
    {platform::kErrorFileTooLarge, "the message is larger than the limit"},
    {platform::kInternetTimeout, "no answer in time"},
    {platform::kInternetInternalError, "the HTTP component failed"},
    {platform::kInternetNameNotResolved, "the host name cannot be resolved"},
    {platform::kInternetOperationCancelled, "cancelled"},
    {platform::kInternetCannotConnect, "no connection can be made"},
    {platform::kInternetConnectionAborted, "the connection was closed without an answer"},
    {platform::kInternetConnectionReset, "the connection was reset"},
    {platform::kInternetInvalidCertificate, "the server's certificate is not trusted"},
    {platform::kHttpInvalidServerResponse, "the answer is no HTTP"},
    {platform::kHttpRedirectFailed, "the redirects lead nowhere"},
    {platform::kInternetSecurityChannelError, "the TLS connection failed"},
});
static_assert(std::ranges::is_sorted(kMeanings, {}, &ResultText::code));

template <std::size_t N>
std::string_view textOf(const std::array<ResultText, N>& table, unsigned code) noexcept {
  const auto row = std::ranges::lower_bound(table, code, {}, &ResultText::code);
  return row != table.end() && row->code == code ? row->text : std::string_view();
}

}  // namespace

std::string_view errorMeaning(unsigned code) noexcept {
  return textOf(kMeanings, code);
}

std::string_view resultText(unsigned code) noexcept {
  const std::string_view text = textOf(kResultTexts, code);
  if (text != kNoGateway) return text;
  static std::array<char, 512> room;
  static const std::string_view kTranslated =
      platform::resourceText(platform::kTextNoGateway, room, kNoGateway);
  return kTranslated;
}

}  // namespace mmsbrix
