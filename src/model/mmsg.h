// CMMsg: one multimedia message, its MMS header fields as typed members and its body as a tree of
// parts.  [OMA-MMS-ENC 6, 7]
#ifndef MMSBRIX_MODEL_MMSG_H
#define MMSBRIX_MODEL_MMSG_H

#include <string_view>

#include "../export.h"
#include "../platform/systemtime.h"
#include "mmaddr.h"
#include "mmpart.h"
#include "mmstring.h"
#include "mmtext.h"

/// A message.  Enumerated members hold the wire octets themselves, 0 meaning unset; yes/no members
/// are -1 for not stated, 1 for yes or show, 0 for no or hide.  No setter validates anything, all
/// return true.  Pointers from getters stay valid until the member is replaced or the message is
/// cleared or destroyed.  Copies are deep.
class MMSBRIX_API CMMsg {
 public:
  enum MSG_TYPE : int {
    MSG_TYPE_UNSET = 0,
    MSG_TYPE_SEND_REQ = 0x80,
    MSG_TYPE_SEND_CONF = 0x81,
    MSG_TYPE_NOTIFICATION_IND = 0x82,
    MSG_TYPE_NOTIFYRESP_IND = 0x83,
    MSG_TYPE_RETRIEVE_CONF = 0x84,
    MSG_TYPE_ACKNOWLEDGE_IND = 0x85,
    MSG_TYPE_DELIVERY_IND = 0x86,
  };
  enum MSG_CLASS : int {
    MSG_CLASS_UNSET = 0,
    MSG_CLASS_PERSONAL = 0x80,
    MSG_CLASS_ADVERTISEMENT = 0x81,
    MSG_CLASS_INFORMATIONAL = 0x82,
    MSG_CLASS_AUTO = 0x83,
  };
  enum MSG_PRIORITY : int {
    MSG_PRIORITY_UNSET = 0,
    MSG_PRIORITY_LOW = 0x80,
    MSG_PRIORITY_NORMAL = 0x81,
    MSG_PRIORITY_HIGH = 0x82,
  };
  /// 0x81 and above are error statuses; a received octet is kept as it comes.
  enum MSG_RSPSTATUS : int {
    MSG_RSPSTATUS_UNSET = 0,
    MSG_RSPSTATUS_OK = 0x80,
  };

  CMMsg();
  CMMsg(const CMMsg& other);
  CMMsg(CMMsg&& other) noexcept;
  CMMsg& operator=(const CMMsg& other);
  CMMsg& operator=(CMMsg&& other) noexcept;
  ~CMMsg();

  /// Makes the message equal to a new one.
  void Clear() noexcept;

  bool SetMsgType(MSG_TYPE type) noexcept;
  bool SetMessageClass(MSG_CLASS messageClass) noexcept;
  bool SetPriority(MSG_PRIORITY priority) noexcept;
  bool SetResponseStatus(MSG_RSPSTATUS status) noexcept;
  bool SetSenderVisibility(int visibility) noexcept;
  bool SetDeliveryReport(int report) noexcept;
  bool SetReadReply(int reply) noexcept;
  /// Dates are in local time; the argument must not be null.  An expiry or delivery time with a
  /// year below 2001 is an interval of days, hours, minutes and seconds.
  bool SetDate(const SYSTEMTIME* date) noexcept;
  bool SetExpiry(const SYSTEMTIME* expiry) noexcept;
  bool SetDeliveryTime(const SYSTEMTIME* deliveryTime) noexcept;
  bool SetFrom(const CMMAddr* from);
  bool AddTo(const CMMAddr* to);
  bool AddCc(const CMMAddr* cc);
  bool AddBcc(const CMMAddr* bcc);
  /// Major and minor number joined by a point, "1.0"; copied as it stands.
  bool SetVersion(const char* version);
  /// Null leaves the member absent; "" makes it present and empty.
  bool SetTransactionId(const char* id);
  bool SetMessageId(const char* id);
  bool SetSubject(const CMMString* subject);
  bool SetResponseText(const CMMString* text);

  /// The same from views, whose length is then known; a text ends at its first zero.
  void AssignVersion(std::string_view version) { version_.assign(version); }
  void AssignTransactionId(std::string_view id);
  void AssignMessageId(std::string_view id);
  /// Makes the text present and empty, to be filled in place.
  CMMString* NewSubject();
  CMMString* NewResponseText();

  MSG_TYPE GetMsgType() const noexcept { return type_; }
  MSG_CLASS GetMsgClass() const noexcept { return class_; }
  MSG_PRIORITY GetPriority() const noexcept { return priority_; }
  MSG_RSPSTATUS GetResponseStatus() const noexcept { return responseStatus_; }
  int GetSenderVisibility() const noexcept { return senderVisibility_; }
  int GetDeliveryReport() const noexcept { return deliveryReport_; }
  int GetReadReply() const noexcept { return readReply_; }
  const char* GetVersion() const noexcept { return version_.c_str(); }
  /// Null when absent.
  const char* GetTransactionId() const noexcept;
  const char* GetMessageId() const noexcept;
  CMMString* GetSubject() noexcept;
  CMMString* GetResponseText() const noexcept;
  /// The message's own records and members, never null.
  SYSTEMTIME* GetDate() noexcept { return &date_; }
  SYSTEMTIME* GetExpiry() noexcept { return &expiry_; }
  SYSTEMTIME* GetDeliveryTime() noexcept { return &deliveryTime_; }
  CMMAddr* GetFrom() noexcept { return &from_; }
  CMMAddrList* GetTo() noexcept { return &to_; }
  CMMAddrList* GetCc() noexcept { return &cc_; }
  CMMAddrList* GetBcc() noexcept { return &bcc_; }
  CMMPart* Content() noexcept { return &content_; }
  const CMMPart* Content() const noexcept { return &content_; }

 private:
  // Absent is distinct from empty.  The text is there in any case: it costs nothing while it is
  // empty, and copies and moves need not ask.
  template <class T>
  struct Optional {
    T text{};
    bool present = false;

    void reset() noexcept { *this = Optional(); }
    T& emplace() noexcept {
      reset();
      present = true;
      return text;
    }
  };

  MSG_TYPE type_ = MSG_TYPE_UNSET;
  Optional<mmsbrix::Text> transactionId_;
  mmsbrix::Text version_;
  SYSTEMTIME date_{};
  CMMAddr from_;
  CMMAddrList to_;
  CMMAddrList cc_;
  CMMAddrList bcc_;
  Optional<CMMString> subject_;
  MSG_CLASS class_ = MSG_CLASS_UNSET;
  SYSTEMTIME expiry_{};
  SYSTEMTIME deliveryTime_{};
  MSG_PRIORITY priority_ = MSG_PRIORITY_UNSET;
  int senderVisibility_ = -1;
  int deliveryReport_ = -1;
  int readReply_ = -1;
  CMMPart content_;
  MSG_RSPSTATUS responseStatus_ = MSG_RSPSTATUS_UNSET;
  // mutable: the getter of a const message hands out a pointer for writing.
  mutable Optional<CMMString> responseText_;
  Optional<mmsbrix::Text> messageId_;
};

#endif  // MMSBRIX_MODEL_MMSG_H
