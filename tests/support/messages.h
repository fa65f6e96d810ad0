// Messages that several tests use.
#ifndef MMSBRIX_TESTS_SUPPORT_MESSAGES_H
#define MMSBRIX_TESTS_SUPPORT_MESSAGES_H

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "mms/mmscodec.h"
#include "model/mmsg.h"

namespace mmsbrix::test {

inline SYSTEMTIME date(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  SYSTEMTIME record{};
  record.wYear = static_cast<std::uint16_t>(year);
  record.wMonth = static_cast<std::uint16_t>(month);
  record.wDay = static_cast<std::uint16_t>(day);
  record.wHour = static_cast<std::uint16_t>(hour);
  record.wMinute = static_cast<std::uint16_t>(minute);
  record.wSecond = static_cast<std::uint16_t>(second);
  return record;
}

inline std::vector<std::uint8_t> encode(CMMsg& message, int expected = 1) {
  void* data = nullptr;
  unsigned int size = 0;
  const int result = MMS_SaveToMemory(&message, &data, &size, 0);
  const auto* octets = static_cast<const std::uint8_t*>(data);
  std::vector<std::uint8_t> copy(octets, octets + size);
  MMS_Free(data);
  if (result != expected) copy.assign(1, 0xEE);
  return copy;
}

inline void decode(const std::vector<std::uint8_t>& octets, CMMsg& message) {
  // A buffer of exactly the size, so that the sanitizers see any step outside it.
  const std::unique_ptr<std::uint8_t[]> exact(new std::uint8_t[octets.size()]);
  std::copy(octets.begin(), octets.end(), exact.get());
  MMS_LoadFromMemory(exact.get(), static_cast<unsigned int>(octets.size()), &message, 0);
}

/// A child of the root part with a media type, one parameter and content.
inline CMMPart* addPart(CMMsg& message, const char* type, const char* parameter, const char* value,
                        const std::string& content) {
  CMMPart* part = message.Content()->NewChild();
  CMMHdr header("Content-Type", type);
  CMMParam charset(parameter, value);
  header.Params()->Add(&charset);
  part->Headers()->Add(&header);
  part->SetContent(content.data(), static_cast<int>(content.size()));
  return part;
}

/// An m-send-req with every field that is written, recipients of three kinds and three parts.
inline void fillComplete(CMMsg& message) {
  message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
  message.SetTransactionId("T-1");
  message.SetVersion("1.2");
  const SYSTEMTIME sent = date(2026, 11, 21, 12, 30, 5);
  message.SetDate(&sent);
  CMMAddr from("+358401234567", CMMAddr::TYPE_PLMN);
  message.SetFrom(&from);
  CMMAddr to("+358409876543", CMMAddr::TYPE_PLMN);
  message.AddTo(&to);
  CMMAddr mail("ann@example.com", CMMAddr::TYPE_PLAIN);
  message.AddCc(&mail);
  CMMAddr host("10.0.0.7", CMMAddr::TYPE_IPV4);
  message.AddBcc(&host);
  CMMString subject("Grüße", "utf-8");
  message.SetSubject(&subject);
  message.SetDeliveryReport(1);
  message.SetSenderVisibility(0);
  message.SetReadReply(0);
  message.SetMessageClass(CMMsg::MSG_CLASS_PERSONAL);
  const SYSTEMTIME twoDays = date(0, 0, 2);
  message.SetExpiry(&twoDays);
  const SYSTEMTIME later = date(2026, 11, 22, 8);
  message.SetDeliveryTime(&later);
  message.SetPriority(CMMsg::MSG_PRIORITY_HIGH);

  CMMHdr contentType("Content-Type", "application/vnd.wap.multipart.related");
  CMMParam type("type", "application/smil");
  CMMParam start("start", "<smil>");
  contentType.Params()->Add(&type);
  contentType.Params()->Add(&start);
  message.Content()->Headers()->Add(&contentType);
  CMMPart* smil = addPart(message, "application/smil", "charset", "utf-8", "<smil/>");
  CMMHdr id("Content-ID", "<smil>");
  smil->Headers()->Add(&id);
  CMMPart* text = addPart(message, "text/plain", "charset", "utf-8", "Hei \xF0\x9F\x98\x80");
  CMMHdr location("Content-Location", "hei.txt");
  text->Headers()->Add(&location);
  CMMPart* image =
      addPart(message, "image/jpeg", "name", "a b.jpg", std::string("\xFF\xD8\x00\xFF\xD9", 5));
  CMMHdr own("X-Own", "1");
  image->Headers()->Add(&own);
}

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_MESSAGES_H
