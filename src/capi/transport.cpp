// Sending and fetching, and what a receiver answers.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "capi/support.h"
#include "mms/mmscodec.h"
#include "mms/receiving.h"
#include "platform/http.h"
#include "transport/mmshttp.h"
#include "transport/mmswap.h"
#include "transport/result_texts.h"

struct mmsbrix_transport {
  CMMSHttp http;
  std::string host;
  std::uint16_t port = 0;
  CMMSWap wap;
  std::string gateway;  // empty for HTTP
  std::uint16_t gatewayPort = 0;
  std::uint64_t sizeLimit = 0;
  bool connected = false;  // by the one or the other
  std::vector<std::uint8_t> fetched;
  mmsbrix_result_kind kind = MMSBRIX_RESULT_NONE;
  std::uint32_t code = 0;
  std::string text;
  std::string detail;
};

namespace mmsbrix::capi {
namespace {

// What a session is opened with has changed, so the next operation opens a new one.
void reset(mmsbrix_transport& transport) {
  transport.http.DisconnectGtw();
  transport.wap.DisconnectGtw();
  transport.connected = false;
}

mmsbrix_result_kind kindOf(CMMSHttp::ResultKind kind) {
  switch (kind) {
    case CMMSHttp::ResultKind::responseStatus:
      return MMSBRIX_RESULT_RESPONSE_STATUS;
    case CMMSHttp::ResultKind::httpStatus:
      return MMSBRIX_RESULT_HTTP_STATUS;
    case CMMSHttp::ResultKind::error:
      return MMSBRIX_RESULT_ERROR;
    case CMMSHttp::ResultKind::retrieveStatus:
      return MMSBRIX_RESULT_RETRIEVE_STATUS;
    case CMMSHttp::ResultKind::none:
      break;
  }
  return MMSBRIX_RESULT_NONE;
}

// Keeps the result of an operation.
void keep(mmsbrix_transport& transport, mmsbrix_result_kind kind, unsigned long code,
          std::string_view text, const char* detail) {
  transport.kind = kind;
  transport.code = static_cast<std::uint32_t>(code);
  transport.text = text;
  transport.detail = detail;
}

// Which error of HTTP tells the same.
unsigned errorOf(CMMSWap::Outcome outcome) {
  switch (outcome) {
    case CMMSWap::Outcome::noAnswer:
      return platform::kInternetTimeout;
    case CMMSWap::Outcome::disconnected:
    case CMMSWap::Outcome::aborted:
      return platform::kInternetConnectionAborted;
    default:
      return platform::kInternetCannotConnect;
  }
}

mmsbrix_status sendThroughGateway(mmsbrix_transport& transport, const std::string& url,
                                  const void* data, std::size_t size) {
  if (transport.sizeLimit != 0 && size > transport.sizeLimit) {
    keep(transport, MMSBRIX_RESULT_ERROR, platform::kErrorFileTooLarge,
         resultText(platform::kErrorFileTooLarge),
         ("the message has " + std::to_string(size) + " octets, the limit is " +
          std::to_string(transport.sizeLimit))
             .c_str());
    return MMSBRIX_FAILED;
  }
  CMMSWap& wap = transport.wap;
  if (!transport.connected) {
    transport.connected = wap.ConnectGtw(transport.gateway.c_str(), transport.gatewayPort, 0);
  }
  const bool sent = transport.connected && wap.SendPdu(url.c_str(), data, size);
  const CMMSWap::Outcome outcome = wap.GetOutcome();
  std::array<char, 512> text{};
  const unsigned long code = wap.GetResult(text.data());
  switch (outcome) {
    case CMMSWap::Outcome::accepted:
    case CMMSWap::Outcome::relayStatus:
      keep(transport, MMSBRIX_RESULT_RESPONSE_STATUS, code, text.data(), wap.GetFailureDetail());
      break;
    case CMMSWap::Outcome::gatewayStatus:
      keep(transport, MMSBRIX_RESULT_WSP_STATUS, code, text.data(), wap.GetFailureDetail());
      break;
    default:
      keep(transport, MMSBRIX_RESULT_ERROR, errorOf(outcome), resultText(errorOf(outcome)),
           wap.GetFailureDetail());
      reset(transport);  // the next message gets a new session
  }
  return sent ? MMSBRIX_OK : MMSBRIX_FAILED;
}

// Runs one operation on a connected transport and keeps its result.
template <class Operation>
mmsbrix_status perform(mmsbrix_transport* transport, const char* url, std::size_t length,
                       const Operation& operation) {
  if (transport == nullptr || url == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    if (!transport->gateway.empty()) return MMSBRIX_NOT_SUPPORTED;
    CMMSHttp& http = transport->http;
    if (!transport->connected) {
      transport->connected = true;
      http.ConnectGtw(transport->host.c_str(), transport->port, 0);
    }
    const bool done = operation(http, textOf(url, length).c_str());
    std::array<char, 512> text{};
    const unsigned long code = http.GetResult(text.data());
    keep(*transport, kindOf(http.GetResultKind()), code, text.data(), http.GetFailureDetail());
    return done ? MMSBRIX_OK : MMSBRIX_FAILED;
  });
}

// Changes what sessions are opened with.
template <class Change>
mmsbrix_status configure(mmsbrix_transport* transport, const Change& change) {
  if (transport == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    if (!change(*transport)) return MMSBRIX_INVALID_ARGUMENT;
    reset(*transport);
    return MMSBRIX_OK;
  });
}

std::optional<bool> answerOf(std::int32_t reportAllowed) {
  return reportAllowed < 0 ? std::nullopt : std::optional(reportAllowed != 0);
}

}  // namespace
}  // namespace mmsbrix::capi

using namespace mmsbrix;        // NOLINT(google-build-using-namespace): the file is their C side
using namespace mmsbrix::capi;  // NOLINT(google-build-using-namespace)

mmsbrix_transport* mmsbrix_transport_new(void) {
  mmsbrix_transport* made = nullptr;
  guarded([&] {
    made = std::make_unique<mmsbrix_transport>().release();
    return MMSBRIX_OK;
  });
  return made;
}

void mmsbrix_transport_free(mmsbrix_transport* transport) {
  if (transport == nullptr) return;
  reset(*transport);
  delete transport;
}

mmsbrix_status mmsbrix_transport_set_proxy(mmsbrix_transport* transport, const char* host,
                                           size_t length, uint16_t port) {
  return configure(transport, [&](mmsbrix_transport& changed) {
    changed.host = textOf(host, length);
    changed.port = port;
    return true;
  });
}

mmsbrix_status mmsbrix_transport_set_gateway(mmsbrix_transport* transport, const char* host,
                                             size_t length, uint16_t port) {
  return configure(transport, [&](mmsbrix_transport& changed) {
    changed.gateway = textOf(host, length);
    changed.gatewayPort = port;
    return true;
  });
}

mmsbrix_status mmsbrix_transport_set_timeout(mmsbrix_transport* transport, uint32_t seconds) {
  return configure(transport, [&](mmsbrix_transport& changed) {
    constexpr std::uint32_t kMostSeconds = 24 * 60 * 60;
    changed.http.SetTimeout(seconds);
    changed.wap.SetTiming(
        seconds == 0 ? WapTiming()
                     : WapTiming::within(std::chrono::seconds(std::min(seconds, kMostSeconds))));
    return true;
  });
}

mmsbrix_status mmsbrix_transport_set_credentials(mmsbrix_transport* transport, const char* user,
                                                 size_t user_length, const char* password,
                                                 size_t password_length) {
  return configure(transport, [&](mmsbrix_transport& changed) {
    changed.http.SetCredentials(textOf(user, user_length).c_str(),
                                textOf(password, password_length).c_str());
    return true;
  });
}

mmsbrix_status mmsbrix_transport_set_user_agent(mmsbrix_transport* transport, const char* agent,
                                                size_t length) {
  return configure(transport, [&](mmsbrix_transport& changed) {
    return changed.http.SetUserAgent(textOf(agent, length).c_str());
  });
}

mmsbrix_status mmsbrix_transport_add_header(mmsbrix_transport* transport, const char* name,
                                            size_t name_length, const char* value,
                                            size_t value_length) {
  return configure(transport, [&](mmsbrix_transport& changed) {
    return changed.http.AddHeader(textOf(name, name_length).c_str(),
                                  textOf(value, value_length).c_str());
  });
}

mmsbrix_status mmsbrix_transport_set_certificates(mmsbrix_transport* transport, const char* path,
                                                  size_t length) {
  return configure(transport, [&](mmsbrix_transport& changed) {
    changed.http.SetTrustedCertificates(textOf(path, length).c_str());
    return true;
  });
}

mmsbrix_status mmsbrix_transport_set_size_limit(mmsbrix_transport* transport, uint64_t octets) {
  if (transport == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  transport->http.SetSizeLimit(octets);
  transport->sizeLimit = octets;
  return MMSBRIX_OK;
}

mmsbrix_status mmsbrix_transport_set_progress(mmsbrix_transport* transport,
                                              mmsbrix_progress progress, void* context) {
  if (transport == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    transport->http.SetProgress({});
    if (progress != nullptr) {
      transport->http.SetProgress([progress, context](std::uint64_t done, std::uint64_t total) {
        return progress(context, done, total) == 0;
      });
    }
    return MMSBRIX_OK;
  });
}

mmsbrix_status mmsbrix_transport_send(mmsbrix_transport* transport, const char* url, size_t length,
                                      mmsbrix_message* message) {
  if (message == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  void* data = nullptr;
  std::size_t size = 0;
  if (const auto status = guarded([&] { return encode(*message, &data, &size); });
      status != MMSBRIX_OK) {
    return status;
  }
  const std::unique_ptr<void, void (*)(void*)> octets(data, &MMS_Free);
  return mmsbrix_transport_send_octets(transport, url, length, data, size);
}

mmsbrix_status mmsbrix_transport_send_octets(mmsbrix_transport* transport, const char* url,
                                             size_t length, const void* data, size_t size) {
  if (transport == nullptr || url == nullptr || (data == nullptr && size != 0)) {
    return MMSBRIX_INVALID_ARGUMENT;
  }
  if (!transport->gateway.empty()) {
    return guarded([&] { return sendThroughGateway(*transport, textOf(url, length), data, size); });
  }
  return perform(transport, url, length,
                 [&](CMMSHttp& http, const char* to) { return http.SendPdu(to, data, size); });
}

mmsbrix_status mmsbrix_transport_fetch(mmsbrix_transport* transport, const char* url, size_t length,
                                       mmsbrix_message** message) {
  if (message == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  const mmsbrix_status status = perform(
      transport, url, length,
      [&](CMMSHttp& http, const char* from) { return http.FetchMMS(from, transport->fetched); });
  if (status != MMSBRIX_OK) return status;
  return mmsbrix_message_decode(transport->fetched.data(), transport->fetched.size(), message);
}

mmsbrix_status mmsbrix_transport_fetched(const mmsbrix_transport* transport, const void** data,
                                         size_t* size) {
  if (transport == nullptr || data == nullptr || size == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  if (transport->fetched.empty()) return MMSBRIX_NOT_PRESENT;
  *data = transport->fetched.data();
  *size = transport->fetched.size();
  return MMSBRIX_OK;
}

mmsbrix_status mmsbrix_transport_report(mmsbrix_transport* transport, const char* url,
                                        size_t length, const void* data, size_t size) {
  if (data == nullptr && size != 0) return MMSBRIX_INVALID_ARGUMENT;
  return perform(transport, url, length,
                 [&](CMMSHttp& http, const char* to) { return http.PostReport(to, data, size); });
}

mmsbrix_status mmsbrix_transport_result(const mmsbrix_transport* transport,
                                        mmsbrix_result_kind* kind, uint32_t* code,
                                        const char** text, size_t* text_length, const char** detail,
                                        size_t* detail_length) {
  if (transport == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  if (kind != nullptr) *kind = transport->kind;
  if (code != nullptr) *code = transport->code;
  give(transport->detail, detail, detail_length);
  return give(transport->text, text, text_length);
}

mmsbrix_status mmsbrix_notification_decode(const void* data, size_t size, char** url,
                                           char** transaction_id, uint64_t* octets) {
  if (data == nullptr || url == nullptr || transaction_id == nullptr) {
    return MMSBRIX_INVALID_ARGUMENT;
  }
  return guarded([&]() -> mmsbrix_status {
    const auto read = readNotification(data, size);
    if (!read) return MMSBRIX_NOT_MMS;
    const auto octetsOf = [](const std::string& text) {
      return std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    };
    void* first = nullptr;
    void* second = nullptr;
    if (giveCopy(octetsOf(read->contentLocation), &first, nullptr) != MMSBRIX_OK ||
        giveCopy(octetsOf(read->transactionId), &second, nullptr) != MMSBRIX_OK) {
      std::free(first);
      return MMSBRIX_NO_MEMORY;
    }
    *url = static_cast<char*>(first);
    *transaction_id = static_cast<char*>(second);
    if (octets != nullptr) *octets = read->messageSize;
    return MMSBRIX_OK;
  });
}

mmsbrix_status mmsbrix_notifyresp_encode(const char* transaction_id, size_t length,
                                         mmsbrix_delivery_status status, int32_t report_allowed,
                                         void** data, size_t* size) {
  if (data == nullptr || size == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  if (status < MMSBRIX_EXPIRED || status > MMSBRIX_UNRECOGNISED) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&] {
    NotifyRespInd answer;
    answer.transactionId = textOf(transaction_id, length);
    answer.status = static_cast<DeliveryStatus>(status);
    answer.reportAllowed = answerOf(report_allowed);
    return giveCopy(encodePdu(answer), data, size);
  });
}

mmsbrix_status mmsbrix_acknowledge_encode(const char* transaction_id, size_t length,
                                          int32_t report_allowed, void** data, size_t* size) {
  if (data == nullptr || size == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&] {
    AcknowledgeInd answer;
    answer.transactionId = textOf(transaction_id, length);
    answer.reportAllowed = answerOf(report_allowed);
    return giveCopy(encodePdu(answer), data, size);
  });
}

mmsbrix_status mmsbrix_read_report_encode(mmsbrix_message* received, int32_t read, void** data,
                                          size_t* size) {
  if (received == nullptr || data == nullptr || size == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    CMMsg& message = received->message;
    if (message.GetMessageId() == nullptr || message.GetFrom()->Value()->Text().empty()) {
      return MMSBRIX_NOT_PRESENT;
    }
    ReadRecInd report;
    report.messageId = message.GetMessageId();
    report.to = *message.GetFrom();
    report.date = static_cast<std::uint64_t>(std::time(nullptr));
    report.status = read != 0 ? ReadStatus::read : ReadStatus::deletedUnread;
    return giveCopy(encodePdu(report), data, size);
  });
}
