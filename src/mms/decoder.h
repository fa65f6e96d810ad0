// Octets to messages.  [OMA-MMS-ENC 6, 7; WAP-230 8.5 multipart]
#ifndef MMSBRIX_MMS_DECODER_H
#define MMSBRIX_MMS_DECODER_H

#include "mms/item_budget.h"
#include "model/content_block.h"
#include "model/mmsg.h"
#include "wsp/octets.h"

namespace mmsbrix {

/// Clears `message` and fills it from a PDU of any type.  Lengths in the data are clamped to what
/// is there; time is linear in the size.
void decodeMessage(Octets pdu, CMMsg& message);
/// The same for a PDU that is the first `size` octets of a block, whose contents are not copied:
/// they stay in it, and it may be changed between them.
void decodeMessage(ContentBlock& block, std::size_t size, CMMsg& message);

/// Appends the entries of a multipart body, as far as they are there and the budget allows, to a
/// part's children. [WAP-230 8.5]
void decodeMultipart(Octets body, CMMPart& root, ItemBudget& budget);

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_DECODER_H
