// MMS PDUs in the bodies of WSP PDUs.
#ifndef MMSBRIX_TRANSPORT_WAP_CONTENT_H
#define MMSBRIX_TRANSPORT_WAP_CONTENT_H

#include <memory>
#include <string_view>

#include "model/mmsg.h"
#include "wsp/octets.h"

namespace mmsbrix {

inline constexpr std::string_view kMmsContentType = "application/vnd.wap.mms-message";

/// True for the content type of MMS PDUs, by its well-known code.
[[nodiscard]] bool isMmsContentType(std::string_view contentType);

/// The MMS message in a body, if it is of that type; null otherwise.
[[nodiscard]] std::unique_ptr<CMMsg> readMms(Octets body, CMMsg::MSG_TYPE type);

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_WAP_CONTENT_H
