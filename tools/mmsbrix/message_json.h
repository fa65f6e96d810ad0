// Messages as JSON: what `show --json` prints of a message and `compose --json` reads.
//
//   { "type": "m-send-req", "transactionId": "T1", "version": "1.2",
//     "date": "2026-11-21T10:30:05Z", "from": {"address": "+358401234567", "kind": "plmn"},
//     "to": ["+358409876543"], "cc": [], "bcc": [], "subject": {"text": "Hei", "charset": "utf-8"},
//     "deliveryReport": true, "readReply": false, "senderVisibility": "show", "class": "Personal",
//     "expiry": "172800s", "deliveryTime": "2026-11-22T06:00:00Z", "priority": "High",
//     "contentType": {"type": "multipart/mixed", "parameters": [{"name": "n", "value": "v"}]},
//     "parts": [{"type": "text/plain", "parameters": [], "headers": [{"name": "n", "value": "v"}],
//                "text": "..."}] }
//
// Every member but the recipients and the body may be left out.  A part's content is "text"
// (UTF-8), "base64", or "file" (read when composing); a message with one part only has "content"
// with one of these instead of "parts".  A text may be a string, or an object of "text" or "base64"
// and "charset".
#ifndef MMSBRIX_TOOLS_MESSAGE_JSON_H
#define MMSBRIX_TOOLS_MESSAGE_JSON_H

#include <mmsbrix/mms/inspector.h>
#include <mmsbrix/model/mmsg.h>

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace mmsbrix::tool {

using Json = nlohmann::ordered_json;

/// The description of an m-send-req from which the same octets can be composed again.
[[nodiscard]] Json describeMessage(const Inspection& inspection, std::string_view pdu);

/// A string when the octets are UTF-8, else {"base64": ...}.
[[nodiscard]] Json octetsJson(std::string_view octets);
/// A list of {"name", "value"}.
[[nodiscard]] Json parametersJson(const std::vector<InspectedParameter>& parameters);

/// Fills `message` from a description; `folder` is where its "file" members are looked up.  False,
/// with `error` naming the member and the reason, when it cannot; with `force`, odd recipients and
/// files that cannot be read are let pass, the latter as parts left out.
bool readMessage(const Json& description, const std::string& folder, bool force, CMMsg& message,
                 std::string& error);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_MESSAGE_JSON_H
