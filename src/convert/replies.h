/// @file
/// Replies to everybody in a conversation.
#ifndef MMSBRIX_CONVERT_REPLIES_H
#define MMSBRIX_CONVERT_REPLIES_H

#include <span>

#include "../export.h"
#include "../model/mmsg.h"

namespace mmsbrix {

/// Who gets a reply, each once.
struct ReplyRecipients {
  CMMAddrList to;  ///< the sender and those it was sent to
  CMMAddrList cc;  ///< those who had a copy
};
/// The sender and those in To of a received message as To, those in Cc as Cc, less the `own`
/// addresses: a reply must not come back to its sender.  Addresses are the same as `sameSubscriber`
/// in model/address_text.h says.  The first
/// 200 people are looked at.
MMSBRIX_API ReplyRecipients replyToAll(CMMsg& received, std::span<const CMMAddr> own);
/// The subject of a reply: "Re: " and the subject, which may begin so already.
MMSBRIX_API CMMString replySubject(const CMMString& subject);

}  // namespace mmsbrix

#endif  // MMSBRIX_CONVERT_REPLIES_H
