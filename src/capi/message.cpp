// Messages as a whole, their fields and recipients.
#include <limits>
#include <memory>
#include <optional>

#include "capi/support.h"
#include "convert/replies.h"
#include "mms/charsets.h"
#include "mms/dates.h"
#include "mms/mms_values.h"
#include "mms/mmscodec.h"
#include "mms/transaction_id.h"
#include "model/address_text.h"

namespace mmsbrix::capi {
namespace {

CMMAddrList* listOf(mmsbrix_message* message, mmsbrix_recipient_list list) {
  if (message == nullptr) return nullptr;
  switch (list) {
    case MMSBRIX_TO:
      return message->message.GetTo();
    case MMSBRIX_CC:
      return message->message.GetCc();
    case MMSBRIX_BCC:
      return message->message.GetBcc();
    default:
      return nullptr;
  }
}

// The member that a field of time stands in, and whether the field is an interval.
SYSTEMTIME* timeOf(CMMsg& message, mmsbrix_number_field field, bool& interval) {
  interval = field == MMSBRIX_EXPIRES_AFTER || field == MMSBRIX_DELIVERED_AFTER;
  switch (field) {
    case MMSBRIX_DATE:
      return message.GetDate();
    case MMSBRIX_EXPIRY:
    case MMSBRIX_EXPIRES_AFTER:
      return message.GetExpiry();
    case MMSBRIX_DELIVERY_TIME:
    case MMSBRIX_DELIVERED_AFTER:
      return message.GetDeliveryTime();
    default:
      return nullptr;
  }
}

mmsbrix_status setOctet(CMMsg& message, mmsbrix_number_field field, int value) {
  switch (field) {
    case MMSBRIX_MESSAGE_TYPE:
      message.SetMsgType(static_cast<CMMsg::MSG_TYPE>(value));
      return MMSBRIX_OK;
    case MMSBRIX_MESSAGE_CLASS:
      message.SetMessageClass(static_cast<CMMsg::MSG_CLASS>(value));
      return MMSBRIX_OK;
    case MMSBRIX_PRIORITY:
      message.SetPriority(static_cast<CMMsg::MSG_PRIORITY>(value));
      return MMSBRIX_OK;
    case MMSBRIX_RESPONSE_STATUS:
      message.SetResponseStatus(static_cast<CMMsg::MSG_RSPSTATUS>(value));
      return MMSBRIX_OK;
    default:
      return MMSBRIX_INVALID_ARGUMENT;
  }
}

mmsbrix_status setFlag(CMMsg& message, mmsbrix_number_field field, int value) {
  switch (field) {
    case MMSBRIX_DELIVERY_REPORT:
      message.SetDeliveryReport(value);
      return MMSBRIX_OK;
    case MMSBRIX_READ_REPLY:
      message.SetReadReply(value);
      return MMSBRIX_OK;
    case MMSBRIX_SENDER_VISIBILITY:
      message.SetSenderVisibility(value);
      return MMSBRIX_OK;
    default:
      return MMSBRIX_INVALID_ARGUMENT;
  }
}

// The value of a field that is no time; nothing when it is unset or there is none such.
std::optional<int> numberOf(const CMMsg& message, mmsbrix_number_field field) {
  const auto octet = [](int value) { return value == 0 ? std::nullopt : std::optional(value); };
  const auto flag = [](int value) { return value == -1 ? std::nullopt : std::optional(value); };
  switch (field) {
    case MMSBRIX_MESSAGE_TYPE:
      return octet(message.GetMsgType());
    case MMSBRIX_MESSAGE_CLASS:
      return octet(message.GetMsgClass());
    case MMSBRIX_PRIORITY:
      return octet(message.GetPriority());
    case MMSBRIX_RESPONSE_STATUS:
      return octet(message.GetResponseStatus());
    case MMSBRIX_DELIVERY_REPORT:
      return flag(message.GetDeliveryReport());
    case MMSBRIX_READ_REPLY:
      return flag(message.GetReadReply());
    case MMSBRIX_SENDER_VISIBILITY:
      return flag(message.GetSenderVisibility());
    default:
      return std::nullopt;
  }
}

mmsbrix_status giveOptional(const char* text, const char** out, std::size_t* length) {
  return text == nullptr ? MMSBRIX_NOT_PRESENT : give(text, out, length);
}

// A text in UTF-8, which the handle keeps.
mmsbrix_status giveUtf8(mmsbrix_message& handle, mmsbrix_text_field field, const CMMString* text,
                        const char** out, std::size_t* length) {
  if (text == nullptr) return MMSBRIX_NOT_PRESENT;
  std::string& kept = handle.texts[field];
  kept = toUtf8(text->Text(), text->Charset()).value_or(std::string(text->Text()));
  return give(kept, out, length);
}

}  // namespace

mmsbrix_status encode(mmsbrix_message& handle, void** data, std::size_t* size) {
  CMMsg& message = handle.message;
  const unsigned recipients =
      message.GetTo()->Count() + message.GetCc()->Count() + message.GetBcc()->Count();
  const bool hasBody = message.Content()->Headers()->Find("Content-Type") != nullptr;
  if (recipients == 0 || !hasBody) return MMSBRIX_INCOMPLETE;
  const CMMsg::MSG_TYPE type = message.GetMsgType();
  message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
  if (message.GetTransactionId() == nullptr) {
    message.SetTransactionId(uniqueTransactionId().c_str());
  }
  void* octets = nullptr;
  unsigned int length = 0;
  const int complete = MMS_SaveToMemory(&message, &octets, &length, 0);
  message.SetMsgType(type);
  if (complete != 1 || octets == nullptr) {
    MMS_Free(octets);
    return complete == 1 ? MMSBRIX_NO_MEMORY : MMSBRIX_INCOMPLETE;
  }
  *data = octets;
  *size = length;
  return MMSBRIX_OK;
}

}  // namespace mmsbrix::capi

using namespace mmsbrix;        // NOLINT(google-build-using-namespace): the file is their C side
using namespace mmsbrix::capi;  // NOLINT(google-build-using-namespace)

mmsbrix_message* mmsbrix_message_new(void) {
  mmsbrix_message* made = nullptr;
  guarded([&] {
    auto handle = std::make_unique<mmsbrix_message>();
    handle->message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
    handle->message.SetVersion("1.2");
    handle->message.SetTransactionId(uniqueTransactionId().c_str());
    made = handle.release();
    return MMSBRIX_OK;
  });
  return made;
}

void mmsbrix_message_free(mmsbrix_message* message) {
  delete message;
}

mmsbrix_status mmsbrix_message_decode(const void* data, size_t size, mmsbrix_message** message) {
  if (message == nullptr || (data == nullptr && size != 0)) return MMSBRIX_INVALID_ARGUMENT;
  if (size > std::numeric_limits<unsigned int>::max()) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    auto handle = std::make_unique<mmsbrix_message>();
    MMS_LoadFromMemory(data, static_cast<unsigned int>(size), &handle->message, 0);
    if (handle->message.GetMsgType() == 0) return MMSBRIX_NOT_MMS;
    *message = handle.release();
    return MMSBRIX_OK;
  });
}

mmsbrix_status mmsbrix_message_load(const char* path, size_t length, mmsbrix_message** message) {
  if (message == nullptr || path == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    auto handle = std::make_unique<mmsbrix_message>();
    if (MMS_Load(textOf(path, length).c_str(), &handle->message, 0) != 1) {
      return MMSBRIX_CANNOT_READ;
    }
    if (handle->message.GetMsgType() == 0) return MMSBRIX_NOT_MMS;
    *message = handle.release();
    return MMSBRIX_OK;
  });
}

mmsbrix_status mmsbrix_message_encode(mmsbrix_message* message, void** data, size_t* size) {
  if (message == nullptr || data == nullptr || size == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&] { return encode(*message, data, size); });
}

mmsbrix_status mmsbrix_message_save(mmsbrix_message* message, const char* path, size_t length) {
  if (message == nullptr || path == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    void* data = nullptr;
    std::size_t size = 0;
    if (const mmsbrix_status status = encode(*message, &data, &size); status != MMSBRIX_OK) {
      return status;
    }
    const std::unique_ptr<void, void (*)(void*)> octets(data, &MMS_Free);
    CMMPart file;
    file.SetContent(data, static_cast<int>(size));
    return file.Save(textOf(path, length).c_str()) ? MMSBRIX_OK : MMSBRIX_CANNOT_WRITE;
  });
}

mmsbrix_status mmsbrix_message_set_number(mmsbrix_message* message, mmsbrix_number_field field,
                                          int64_t value) {
  if (message == nullptr || value < 0) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    bool interval = false;
    if (SYSTEMTIME* time = timeOf(message->message, field, interval)) {
      const auto seconds = static_cast<std::uint64_t>(value);
      const auto record = interval ? intervalRecord(seconds) : instantRecord(seconds);
      if (record) *time = *record;
      return record ? MMSBRIX_OK : MMSBRIX_INVALID_ARGUMENT;
    }
    if (value <= 1) return setFlag(message->message, field, static_cast<int>(value));
    const bool octet = value >= 0x80 && value <= 0xFF;
    return octet ? setOctet(message->message, field, static_cast<int>(value))
                 : MMSBRIX_INVALID_ARGUMENT;
  });
}

mmsbrix_status mmsbrix_message_number(mmsbrix_message* message, mmsbrix_number_field field,
                                      int64_t* value) {
  if (message == nullptr || value == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    bool interval = false;
    if (const SYSTEMTIME* time = timeOf(message->message, field, interval)) {
      const auto date = dateValue(*time);
      if (!date || date->absolute == interval) return MMSBRIX_NOT_PRESENT;
      *value = static_cast<int64_t>(date->seconds);
      return MMSBRIX_OK;
    }
    const auto number = numberOf(message->message, field);
    if (!number) return MMSBRIX_NOT_PRESENT;
    *value = *number;
    return MMSBRIX_OK;
  });
}

mmsbrix_status mmsbrix_message_set_text(mmsbrix_message* message, mmsbrix_text_field field,
                                        const char* text, size_t length) {
  if (message == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    const std::string given = textOf(text, length);
    const CMMString utf8(given.c_str(), "utf-8");
    switch (field) {
      case MMSBRIX_TRANSACTION_ID:
        message->message.SetTransactionId(given.c_str());
        return MMSBRIX_OK;
      case MMSBRIX_MESSAGE_ID:
        message->message.SetMessageId(given.c_str());
        return MMSBRIX_OK;
      case MMSBRIX_VERSION:
        if (!versionOctet(given.c_str())) return MMSBRIX_INVALID_ARGUMENT;
        message->message.SetVersion(given.c_str());
        return MMSBRIX_OK;
      case MMSBRIX_SUBJECT:
        if (!isUtf8(given)) return MMSBRIX_INVALID_ARGUMENT;
        message->message.SetSubject(&utf8);
        return MMSBRIX_OK;
      case MMSBRIX_RESPONSE_TEXT:
        if (!isUtf8(given)) return MMSBRIX_INVALID_ARGUMENT;
        message->message.SetResponseText(&utf8);
        return MMSBRIX_OK;
      case MMSBRIX_FROM: {
        const auto from = given.empty() ? CMMAddr() : addressFromText(given);
        if (!from) return MMSBRIX_INVALID_ARGUMENT;
        message->message.SetFrom(&*from);
        return MMSBRIX_OK;
      }
      default:
        return MMSBRIX_INVALID_ARGUMENT;
    }
  });
}

mmsbrix_status mmsbrix_message_text(mmsbrix_message* message, mmsbrix_text_field field,
                                    const char** text, size_t* length) {
  if (message == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    CMMsg& read = message->message;
    switch (field) {
      case MMSBRIX_TRANSACTION_ID:
        return giveOptional(read.GetTransactionId(), text, length);
      case MMSBRIX_MESSAGE_ID:
        return giveOptional(read.GetMessageId(), text, length);
      case MMSBRIX_VERSION:
        return giveOptional(*read.GetVersion() == '\0' ? nullptr : read.GetVersion(), text, length);
      case MMSBRIX_SUBJECT:
        return giveUtf8(*message, field, read.GetSubject(), text, length);
      case MMSBRIX_RESPONSE_TEXT:
        return giveUtf8(*message, field, read.GetResponseText(), text, length);
      case MMSBRIX_FROM: {
        const CMMString* from = read.GetFrom()->Value();
        return giveUtf8(*message, field, from->Text().empty() ? nullptr : from, text, length);
      }
      case MMSBRIX_BODY_TYPE: {
        const CMMHdr* type = read.Content()->Headers()->Find("Content-Type");
        return giveOptional(type == nullptr ? nullptr : type->GetValue(), text, length);
      }
      default:
        return MMSBRIX_INVALID_ARGUMENT;
    }
  });
}

mmsbrix_status mmsbrix_message_add_recipient(mmsbrix_message* message, mmsbrix_recipient_list list,
                                             const char* text, size_t length,
                                             mmsbrix_address_kind kind) {
  CMMAddrList* addresses = listOf(message, list);
  if (addresses == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    const std::string given = textOf(text, length);
    if (kind == MMSBRIX_ADDRESS_BY_TEXT) {
      const auto address = addressFromText(given);
      if (!address) return MMSBRIX_INVALID_ARGUMENT;
      addresses->Add(&*address);
      return MMSBRIX_OK;
    }
    if (given.empty() || kind < MMSBRIX_ADDRESS_OTHER || kind > MMSBRIX_ADDRESS_MAIL) {
      return MMSBRIX_INVALID_ARGUMENT;
    }
    const CMMAddr address(given.c_str(), static_cast<CMMAddr::TYPE>(kind));
    addresses->Add(&address);
    return MMSBRIX_OK;
  });
}

size_t mmsbrix_message_recipient_count(mmsbrix_message* message, mmsbrix_recipient_list list) {
  const CMMAddrList* addresses = listOf(message, list);
  return addresses == nullptr ? 0 : addresses->Count();
}

mmsbrix_status mmsbrix_message_recipient(mmsbrix_message* message, mmsbrix_recipient_list list,
                                         size_t index, const char** text, size_t* length,
                                         mmsbrix_address_kind* kind) {
  CMMAddrList* addresses = listOf(message, list);
  if (addresses == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  if (index >= addresses->Count()) return MMSBRIX_NOT_PRESENT;
  const CMMAddr& address = *(*addresses)[static_cast<int>(index)];
  if (kind != nullptr) *kind = address.GetType();
  return give(address.Value()->Text(), text, length);
}

mmsbrix_status mmsbrix_message_reply_to(mmsbrix_message* reply, mmsbrix_message* received,
                                        const char* own, size_t own_length) {
  if (reply == nullptr || received == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    const std::string ownText = textOf(own, own_length);
    std::optional<CMMAddr> self;
    if (!ownText.empty() && !(self = addressFromText(ownText))) return MMSBRIX_INVALID_ARGUMENT;
    const std::span<const CMMAddr> none;
    const ReplyRecipients people =
        replyToAll(received->message, self ? std::span<const CMMAddr>(&*self, 1) : none);
    for (const CMMAddr& address : people.to) reply->message.AddTo(&address);
    for (const CMMAddr& address : people.cc) reply->message.AddCc(&address);
    if (const CMMString* subject = received->message.GetSubject()) {
      const CMMString answer = replySubject(*subject);
      reply->message.SetSubject(&answer);
    }
    return MMSBRIX_OK;
  });
}
