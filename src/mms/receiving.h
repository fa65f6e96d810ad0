/// @file
/// The receiving side of a client: the notification that it gets, and the three PDUs with which it
/// answers.  [OMA-MMS-ENC 6.2 m-notification-ind, m-notifyresp-ind; 6.3 m-acknowledge-ind;
/// 6.7 m-read-rec-ind]
#ifndef MMSBRIX_MMS_RECEIVING_H
#define MMSBRIX_MMS_RECEIVING_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "../export.h"
#include "../model/mmaddr.h"

namespace mmsbrix {

/// An m-notification-ind: a message waits at the relay.
struct Notification {
  std::string contentLocation;  ///< URL from which the message is fetched; "" when there is none
  std::string transactionId;    ///< goes back in the m-notifyresp-ind
  std::string version = "1.0";  ///< "major.minor"
  CMMAddr from;                 ///< empty when the sender is not told
  std::optional<std::string> subject;  ///< UTF-8
  std::uint64_t messageSize = 0;       ///< octets that are announced, 0 when they are not
};
/// Reads an m-notification-ind; nothing for any other octets.  Fields that are not understood stay
/// as in a new record.
MMSBRIX_API std::optional<Notification> readNotification(const void* data, std::size_t size);

/// What became of a message that was announced: the X-Mms-Status of an m-notifyresp-ind.
enum class DeliveryStatus : std::uint8_t {
  expired = 0x80,       ///< it was not fetched in time
  retrieved = 0x81,     ///< it has been fetched
  rejected = 0x82,      ///< it is not wanted
  deferred = 0x83,      ///< it will be fetched later
  unrecognised = 0x84,  ///< the notification was not understood
};
/// The X-Mms-Read-Status of an m-read-rec-ind.
enum class ReadStatus : std::uint8_t {
  read = 0x80,           ///< the recipient has opened it
  deletedUnread = 0x81,  ///< deleted without being read
};

/// Answers an m-notification-ind.  The version of an answer is that of what it answers.
struct NotifyRespInd {
  std::string transactionId;                          ///< of the notification
  std::string version = "1.2";                        ///< that of the notification
  DeliveryStatus status = DeliveryStatus::retrieved;  ///< what became of the message
  std::optional<bool> reportAllowed{};  ///< whether the sender may be told; left out when not said
};
/// Answers an m-retrieve-conf that was fetched later than its notification was answered.
struct AcknowledgeInd {
  std::string transactionId;            ///< of the m-retrieve-conf
  std::string version = "1.2";          ///< that of the m-retrieve-conf
  std::optional<bool> reportAllowed{};  ///< as in a NotifyRespInd
};
/// Tells the sender of a message, who asked for it, that it was read.
struct ReadRecInd {
  std::string messageId;                 ///< of the message
  std::string version = "1.2";           ///< that of the message
  CMMAddr to{};                          ///< the sender of the message
  CMMAddr from{};                        ///< the own address; empty leaves it to the relay
  std::optional<std::uint64_t> date{};   ///< when it was read, seconds since 1970
  ReadStatus status = ReadStatus::read;  ///< what happened to it
};

///@{
/// The octets of each, fields in the standard's order.  A version that is no "major.minor" is left
/// out; texts end at their first zero.
MMSBRIX_API std::vector<std::uint8_t> encodePdu(const NotifyRespInd& answer);
MMSBRIX_API std::vector<std::uint8_t> encodePdu(const AcknowledgeInd& answer);
MMSBRIX_API std::vector<std::uint8_t> encodePdu(const ReadRecInd& report);
///@}

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_RECEIVING_H
