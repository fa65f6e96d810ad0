/// @file
/// Transaction ids, by which a confirmation finds its request.  [OMA-MMS-ENC 7.2.29]
#ifndef MMSBRIX_MMS_TRANSACTION_ID_H
#define MMSBRIX_MMS_TRANSACTION_ID_H

#include <string>

#include "../export.h"

namespace mmsbrix {

/// A transaction id that no other run gives: time and chance.
MMSBRIX_API std::string uniqueTransactionId();

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_TRANSACTION_ID_H
