// What keeps a message from being a valid m-send-req.
#ifndef MMSBRIX_TOOLS_MESSAGE_CHECK_H
#define MMSBRIX_TOOLS_MESSAGE_CHECK_H

#include <mmsbrix/model/mmsg.h>

#include <string>
#include <vector>

namespace mmsbrix::tool {

/// One line for each reason; none for a message that can go out.  Moves the message's cursors.
[[nodiscard]] std::vector<std::string> findProblems(CMMsg& message);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_MESSAGE_CHECK_H
