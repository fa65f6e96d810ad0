// An encoded m-send-req, through the public interface.
#ifndef MMSBRIX_TESTS_SUPPORT_SEND_REQ_H
#define MMSBRIX_TESTS_SUPPORT_SEND_REQ_H

#include <mmsbrix/mms/mmscodec.h>

#include <string>

namespace mmsbrix::test {

struct SendReq {
  std::string transactionId = "T1";
  const char* to = "+358401234567";  ///< null leaves the message without a recipient
  std::string content = "hello";
};

/// The octets of a message with one text body.
inline std::string encodeSendReq(const SendReq& request = {}) {
  CMMsg message;
  message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
  message.SetTransactionId(request.transactionId.c_str());
  message.SetVersion("1.0");
  const CMMAddr from("+358407654321", CMMAddr::TYPE_PLMN);
  message.SetFrom(&from);
  if (request.to != nullptr) {
    const CMMAddr to(request.to, CMMAddr::TYPE_PLMN);
    message.AddTo(&to);
  }
  const CMMHdr type("Content-Type", "text/plain");
  message.Content()->Headers()->Add(&type);
  message.Content()->SetContent(request.content.data(), static_cast<int>(request.content.size()));
  void* data = nullptr;
  unsigned size = 0;
  MMS_SaveToMemory(&message, &data, &size, 0);
  std::string pdu(static_cast<const char*>(data), size);
  MMS_Free(data);
  return pdu;
}

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_SEND_REQ_H
