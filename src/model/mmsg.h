/// @file
/// CMMsg: one multimedia message, its MMS header fields as typed members and its body as a tree of
/// parts.  [OMA-MMS-ENC 6, 7]
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
  /// X-Mms-Message-Type: which PDU a message is.  Newer types are kept by their octets.
  /// [OMA-MMS-ENC 7.2]
  enum MSG_TYPE : int {
    MSG_TYPE_UNSET = 0,                ///< not stated
    MSG_TYPE_SEND_REQ = 0x80,          ///< a client submits; the only one that is encoded
    MSG_TYPE_SEND_CONF = 0x81,         ///< the relay's answer to that
    MSG_TYPE_NOTIFICATION_IND = 0x82,  ///< a message waits at the relay
    MSG_TYPE_NOTIFYRESP_IND = 0x83,    ///< the client's answer to that
    MSG_TYPE_RETRIEVE_CONF = 0x84,     ///< the message that a client fetched
    MSG_TYPE_ACKNOWLEDGE_IND = 0x85,   ///< it arrived, for one that was deferred before
    MSG_TYPE_DELIVERY_IND = 0x86,      ///< what became of a submitted message
  };
  /// X-Mms-Message-Class.  [OMA-MMS-ENC 7.2]
  enum MSG_CLASS : int {
    MSG_CLASS_UNSET = 0,             ///< not stated, which means personal
    MSG_CLASS_PERSONAL = 0x80,       ///< from one person to another
    MSG_CLASS_ADVERTISEMENT = 0x81,  ///< advertising
    MSG_CLASS_INFORMATIONAL = 0x82,  ///< from an information service
    MSG_CLASS_AUTO = 0x83,           ///< made by a machine: a report, say
  };
  /// X-Mms-Priority.  [OMA-MMS-ENC 7.2]
  enum MSG_PRIORITY : int {
    MSG_PRIORITY_UNSET = 0,      ///< not stated, which means normal
    MSG_PRIORITY_LOW = 0x80,     ///< can wait
    MSG_PRIORITY_NORMAL = 0x81,  ///< as usual
    MSG_PRIORITY_HIGH = 0x82,    ///< urgent
  };
  /// X-Mms-Response-Status: 0x81 and above are error statuses; a received octet is kept as it
  /// comes.  `mmsbrix::responseStatusName` has their names.  [OMA-MMS-ENC 7.2]
  enum MSG_RSPSTATUS : int {
    MSG_RSPSTATUS_UNSET = 0,  ///< none came
    MSG_RSPSTATUS_OK = 0x80,  ///< the relay accepted the message
  };

  CMMsg();
  ///@{
  /// Copies are deep: parts with their content, and the optional members, which stay absent where
  /// they are.
  CMMsg(const CMMsg& other);
  CMMsg(CMMsg&& other) noexcept;
  CMMsg& operator=(const CMMsg& other);
  CMMsg& operator=(CMMsg&& other) noexcept;
  ///@}
  ~CMMsg();

  /// Makes the message equal to a new one.
  void Clear() noexcept;

  ///@{
  /// Stores the octet as it is, one that no enumerator has too; 0 leaves the field out.
  bool SetMsgType(MSG_TYPE type) noexcept;
  bool SetMessageClass(MSG_CLASS messageClass) noexcept;
  bool SetPriority(MSG_PRIORITY priority) noexcept;
  bool SetResponseStatus(MSG_RSPSTATUS status) noexcept;
  ///@}
  ///@{
  /// 1 for yes or show, 0 for no or hide, -1 leaves the field out.
  bool SetSenderVisibility(int visibility) noexcept;
  bool SetDeliveryReport(int report) noexcept;
  bool SetReadReply(int reply) noexcept;
  ///@}
  ///@{
  /// Dates are in local time; the argument must not be null.  An expiry or delivery time with a
  /// year below 2001 is an interval of days, hours, minutes and seconds.
  bool SetDate(const SYSTEMTIME* date) noexcept;
  bool SetExpiry(const SYSTEMTIME* expiry) noexcept;
  bool SetDeliveryTime(const SYSTEMTIME* deliveryTime) noexcept;
  ///@}
  /// The sender, copied; it must not be null.  An empty address leaves it to the relay.
  bool SetFrom(const CMMAddr* from);
  ///@{
  /// Appends a copy of a recipient; it must not be null.
  bool AddTo(const CMMAddr* to);
  bool AddCc(const CMMAddr* cc);
  bool AddBcc(const CMMAddr* bcc);
  ///@}
  /// Major and minor number joined by a point, "1.0"; copied as it stands.
  bool SetVersion(const char* version);
  ///@{
  /// Copies the text.  Null leaves the member absent; "" makes it present and empty.
  bool SetTransactionId(const char* id);
  bool SetMessageId(const char* id);
  bool SetSubject(const CMMString* subject);
  bool SetResponseText(const CMMString* text);

  ///@}

  ///@{
  /// The same from views, whose length is then known; a text ends at its first zero.
  void AssignVersion(std::string_view version) { version_.assign(version); }
  void AssignTransactionId(std::string_view id);
  void AssignMessageId(std::string_view id);
  ///@}
  ///@{
  /// Makes the text present and empty, to be filled in place.
  CMMString* NewSubject();
  CMMString* NewResponseText();
  ///@}

  ///@{
  /// The octet, 0 when unset.
  MSG_TYPE GetMsgType() const noexcept { return type_; }
  MSG_CLASS GetMsgClass() const noexcept { return class_; }
  MSG_PRIORITY GetPriority() const noexcept { return priority_; }
  MSG_RSPSTATUS GetResponseStatus() const noexcept { return responseStatus_; }
  ///@}
  ///@{
  /// 1 for yes or show, 0 for no or hide, -1 when not stated.
  int GetSenderVisibility() const noexcept { return senderVisibility_; }
  int GetDeliveryReport() const noexcept { return deliveryReport_; }
  int GetReadReply() const noexcept { return readReply_; }
  ///@}
  /// "major.minor", "" when unset; never null.
  const char* GetVersion() const noexcept { return version_.c_str(); }
  ///@{
  /// Null when absent; the message owns it.
  const char* GetTransactionId() const noexcept;
  const char* GetMessageId() const noexcept;
  CMMString* GetSubject() noexcept;
  CMMString* GetResponseText() const noexcept;
  ///@}
  ///@{
  /// The message's own records and members, never null; what is written there is the message's.  A
  /// date whose fields are all 0 is unset.
  SYSTEMTIME* GetDate() noexcept { return &date_; }
  SYSTEMTIME* GetExpiry() noexcept { return &expiry_; }
  SYSTEMTIME* GetDeliveryTime() noexcept { return &deliveryTime_; }
  CMMAddr* GetFrom() noexcept { return &from_; }
  CMMAddrList* GetTo() noexcept { return &to_; }
  CMMAddrList* GetCc() noexcept { return &cc_; }
  CMMAddrList* GetBcc() noexcept { return &bcc_; }
  CMMPart* Content() noexcept { return &content_; }
  const CMMPart* Content() const noexcept { return &content_; }
  ///@}

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
