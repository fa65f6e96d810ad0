#include "transport/wap_content.h"

#include "mms/mmscodec.h"
#include "wsp/wsp_assigned_headers.h"
#include "wsp/wsp_header_values.h"

namespace mmsbrix {

bool isMmsContentType(std::string_view contentType) {
  constexpr std::int32_t kMmsMessage = 0x3E;
  const WapStack::Content_type_value value(contentType);
  const auto* table = WapAssignments::getTable(WapAssignments::kContentTypes);
  const std::int32_t number = WapAssignments::nameToNumber(*table, value.mediaType());
  return !WapAssignments::isUnassigned(number) && (number & 0xFFFF) == kMmsMessage;
}

std::unique_ptr<CMMsg> readMms(Octets body, CMMsg::MSG_TYPE type) {
  auto message = std::make_unique<CMMsg>();
  const auto size = static_cast<unsigned>(body.size());
  if (MMS_LoadFromMemory(body.data(), size, message.get(), 0) == 0) return nullptr;
  if (message->GetMsgType() != type) return nullptr;
  return message;
}

}  // namespace mmsbrix
