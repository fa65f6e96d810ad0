// Messages to octets.  [OMA-MMS-ENC 6.1.1 m-send-req; WAP-230 8.5 multipart]
#ifndef MMSBRIX_MMS_ENCODER_H
#define MMSBRIX_MMS_ENCODER_H

#include "model/mmsg.h"
#include "wsp/octets.h"

namespace mmsbrix {

/// Appends an m-send-req, or nothing for a message of another type.  False when a multipart body
/// could not be completed; what was written up to there stays.  Moves the message's cursors.
bool encodeMessage(Writer& out, CMMsg& message);

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_ENCODER_H
