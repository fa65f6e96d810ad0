#include <mmsbrix/mms/mmscodec.h>

#include <algorithm>
#include <sstream>
#include <string>

#include "compose.h"
#include "targets.h"

namespace mmsbrix::fuzz {

void composeJson(Input input) {
  const std::string text(input.begin(), input.end());
  // Descriptions may name files; those of this machine stay out of it.
  const bool escapes = text.find("\\u") != std::string::npos;
  const bool names = text.find("file") != std::string::npos || escapes;
  if (names && text.find('/') != std::string::npos) return;
  tool::ComposeCommand command;
  command.jsonFile = "-";
  command.output = "-";
  std::istringstream in(text);
  std::ostringstream out;
  std::ostringstream err;
  const int status = tool::runCompose(command, {in, out, err});
  if (status != tool::kDone) {
    require(!err.str().empty(), "a refusal has its reason");
    require(out.str().empty(), "what is refused is not written");
    return;
  }
  CMMsg message;
  MMS_LoadFromMemory(out.str().data(), static_cast<unsigned>(out.str().size()), &message, 0);
  require(message.GetMsgType() == CMMsg::MSG_TYPE_SEND_REQ, "what is composed is a message");
}

std::span<const Target> targets() {
  static constexpr Target kTargets[] = {{"compose_json", composeJson}};
  return kTargets;
}

std::vector<std::vector<std::uint8_t>> encodedSeeds(std::string_view) {
  return {};
}

}  // namespace mmsbrix::fuzz
