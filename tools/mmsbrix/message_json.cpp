#include "message_json.h"

#include <mmsbrix/convert/media_types.h>
#include <mmsbrix/mms/charsets.h>
#include <mmsbrix/mms/dates.h>
#include <mmsbrix/mms/transaction_id.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <stdexcept>

#include "command.h"
#include "message_check.h"
#include "recipient.h"
#include "when.h"

namespace mmsbrix::tool {
namespace {

// Codes of the fields that a description has, without the high bit.  [OMA-MMS-ENC table 12]
enum Field : int {
  kBcc = 0x01,
  kCc = 0x02,
  kDate = 0x05,
  kDeliveryReport = 0x06,
  kDeliveryTime = 0x07,
  kExpiry = 0x08,
  kFrom = 0x09,
  kClass = 0x0A,
  kVersion = 0x0D,
  kPriority = 0x0F,
  kReadReply = 0x10,
  kVisibility = 0x14,
  kSubject = 0x16,
  kTo = 0x17,
  kTransactionId = 0x18,
  kContentType = 0x04,
};

constexpr std::uint8_t kRelativeToken = 0x81;
constexpr std::uint8_t kInsertAddressToken = 0x81;
constexpr std::string_view kTypeMark = "/TYPE=";

struct NamedOctet {
  std::string_view name;
  int octet;
};
constexpr auto kClasses = std::to_array<NamedOctet>(
    {{"Personal", 0x80}, {"Advertisement", 0x81}, {"Informational", 0x82}, {"Auto", 0x83}});
constexpr auto kPriorities =
    std::to_array<NamedOctet>({{"Low", 0x80}, {"Normal", 0x81}, {"High", 0x82}});

// ---- octets to JSON
// ------------------------------------------------------------------------------

Json textJson(std::string_view octets, const std::string& charset) {
  if (charset.empty()) return octetsJson(octets);
  Json text;
  const auto utf8 = toUtf8(octets, charset);
  if (utf8 && fromUtf8(*utf8, charset) == octets) {
    text["text"] = *utf8;
  } else {
    text["base64"] = toBase64(octets);
  }
  text["charset"] = charset;
  return text;
}

Json addressJson(const InspectedField& field) {
  std::string_view text = *field.text;
  std::string_view kind = "mail";
  if (const std::size_t mark = text.find(kTypeMark); mark != std::string_view::npos) {
    const std::string_view suffix = text.substr(mark + kTypeMark.size());
    kind = suffix == "PLMN"   ? "plmn"
           : suffix == "IPv4" ? "ipv4"
           : suffix == "IPv6" ? "ipv6"
                              : "other";
    if (kind != "other") text = text.substr(0, mark);
  }
  Json address;
  const Json value = textJson(text, field.charset);
  if (value.is_string()) {
    address["address"] = value;
  } else {
    address = value;
  }
  address["kind"] = kind;
  return address;
}

Json whenJson(const InspectedField& field) {
  if (field.token == kRelativeToken) return std::to_string(*field.number) + "s";
  if (parseInstant(field.value) == field.number) return field.value;
  return "@" + std::to_string(*field.number);
}

void addContent(Json& where, std::string_view type, std::string_view octets) {
  const bool readable = type.starts_with("text/") || type.find("smil") != std::string_view::npos ||
                        type.find("xml") != std::string_view::npos;
  if (readable && isUtf8(octets)) {
    where["text"] = octets;
  } else {
    where["base64"] = toBase64(octets);
  }
}

Json partJson(const InspectedPart& part, std::string_view pdu) {
  Json json;
  json["type"] = octetsJson(part.contentType);
  json["parameters"] = parametersJson(part.parameters);
  json["headers"] = Json::array();
  for (const InspectedHeader& header : part.headers) {
    json["headers"].push_back(
        {{"name", octetsJson(header.name)}, {"value", octetsJson(header.value)}});
  }
  addContent(json, part.contentType, pdu.substr(part.dataOffset, part.dataLength));
  return json;
}

void addField(Json& message, const InspectedField& field) {
  const auto flag = [&] { return field.number == 0x80U; };
  switch (field.code) {
    case kTransactionId:
      if (field.text) message["transactionId"] = octetsJson(*field.text);
      break;
    case kVersion:
      message["version"] = field.value;
      break;
    case kDate:
      if (field.number) message["date"] = whenJson(field);
      break;
    case kExpiry:
      if (field.number) message["expiry"] = whenJson(field);
      break;
    case kDeliveryTime:
      if (field.number) message["deliveryTime"] = whenJson(field);
      break;
    case kFrom:
      if (field.token != kInsertAddressToken && field.text) message["from"] = addressJson(field);
      break;
    case kTo:
    case kCc:
    case kBcc:
      if (field.text) {
        message[field.code == kTo   ? "to"
                : field.code == kCc ? "cc"
                                    : "bcc"]
            .push_back(addressJson(field));
      }
      break;
    case kSubject:
      if (field.text) message["subject"] = textJson(*field.text, field.charset);
      break;
    case kDeliveryReport:
      message["deliveryReport"] = flag();
      break;
    case kReadReply:
      message["readReply"] = flag();
      break;
    case kVisibility:
      message["senderVisibility"] = flag() ? "hide" : "show";
      break;
    case kClass:
      if (field.number) message["class"] = field.value;
      break;
    case kPriority:
      message["priority"] = field.value;
      break;
    default:
      break;
  }
}

// ---- JSON to a message
// ---------------------------------------------------------------------------

// Carries the reason out of the depth of a description.
class Refusal : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
};

[[noreturn]] void refuse(const std::string& member, const std::string& reason) {
  throw Refusal("\"" + member + "\": " + reason);
}

class Builder {
 public:
  Builder(const std::string& folder, bool force, CMMsg& message)
      : folder_(folder), force_(force), message_(message) {}

  void build(const Json& description) {
    if (!description.is_object()) throw Refusal("the description is no JSON object");
    message_.Clear();
    message_.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
    message_.SetVersion("1.2");
    bool named = false;
    for (const auto& [member, value] : description.items()) {
      if (member == "transactionId") named = true;
      readMember(member, value);
    }
    if (!named) message_.SetTransactionId(uniqueTransactionId().c_str());
    readBody(description);
  }

 private:
  void readMember(const std::string& member, const Json& value) {
    if (member == "type") {
      if (value != "m-send-req") refuse(member, "only an m-send-req can be composed");
    } else if (member == "transactionId") {
      message_.SetTransactionId(value.is_null() ? nullptr : octets(member, value).c_str());
    } else if (member == "version") {
      message_.SetVersion(octets(member, value).c_str());
    } else if (member == "date" || member == "expiry" || member == "deliveryTime") {
      readWhen(member, value);
    } else if (member == "from") {
      const CMMAddr from = address(member, value);
      message_.SetFrom(&from);
    } else if (member == "to" || member == "cc" || member == "bcc") {
      readRecipients(member, value);
    } else if (member == "subject") {
      const CMMString subject = text(member, value);
      message_.SetSubject(&subject);
    } else if (member == "deliveryReport") {
      message_.SetDeliveryReport(boolean(member, value));
    } else if (member == "readReply") {
      message_.SetReadReply(boolean(member, value));
    } else if (member == "senderVisibility") {
      if (value != "show" && value != "hide") refuse(member, "neither \"show\" nor \"hide\"");
      message_.SetSenderVisibility(value == "show" ? 1 : 0);
    } else if (member == "class") {
      message_.SetMessageClass(static_cast<CMMsg::MSG_CLASS>(named(member, value, kClasses)));
    } else if (member == "priority") {
      message_.SetPriority(static_cast<CMMsg::MSG_PRIORITY>(named(member, value, kPriorities)));
    } else if (member != "contentType" && member != "parts" && member != "content") {
      refuse(member, "is not known");
    }
  }

  static int boolean(const std::string& member, const Json& value) {
    if (!value.is_boolean()) refuse(member, "neither true nor false");
    return value.get<bool>() ? 1 : 0;
  }

  static int named(const std::string& member, const Json& value,
                   std::span<const NamedOctet> names) {
    std::string known;
    for (const NamedOctet& row : names) {
      if (value == std::string(row.name)) return row.octet;
      if (!known.empty()) known += ", ";
      known += row.name;
    }
    refuse(member, "none of " + known);
  }

  // A text of the message: a string, or {"base64": ...}; the wire has no zero octet in it.
  static std::string octets(const std::string& member, const Json& value) {
    std::string text = content(member, value);
    if (text.find('\0') != std::string::npos) refuse(member, "has a zero octet");
    return text;
  }

  // The same for content, which may be any octets.
  static std::string content(const std::string& member, const Json& value) {
    if (value.is_string()) return value.get<std::string>();
    if (value.is_object() && value.contains("base64") && value["base64"].is_string()) {
      if (auto decoded = fromBase64(value["base64"].get<std::string>())) return *std::move(decoded);
      refuse(member, "its base64 cannot be read");
    }
    refuse(member, "no text");
  }

  // A string, or an object of "text" or "base64" and "charset".
  static CMMString text(const std::string& member, const Json& value) {
    if (!value.is_object()) return CMMString(octets(member, value).c_str());
    const std::string charset = value.value("charset", "");
    if (!value.contains("text")) return {octets(member, value).c_str(), charset.c_str()};
    const auto converted = fromUtf8(octets(member, value["text"]), charset);
    if (!converted) refuse(member, "the text has no form in the charset " + charset);
    return {converted->c_str(), charset.c_str()};
  }

  [[nodiscard]] CMMAddr address(const std::string& member, const Json& value) const {
    if (value.is_object() && value.contains("kind")) {
      const auto kind = addressKind(octets(member, value["kind"]));
      if (!kind) refuse(member, "the kind is none of plmn, ipv4, ipv6, mail, other");
      const CMMString string = value.contains("address")
                                   ? CMMString(octets(member, value["address"]).c_str())
                                   : text(member, value);
      return {&string, *kind};
    }
    const Json& spelled = value.is_object() && value.contains("address") ? value["address"] : value;
    std::string error;
    auto parsed = parseRecipient(octets(member, spelled), force_, error);
    if (!parsed) refuse(member, error);
    return *parsed;
  }

  void readRecipients(const std::string& member, const Json& value) {
    CMMAddrList& list = member == "to"   ? *message_.GetTo()
                        : member == "cc" ? *message_.GetCc()
                                         : *message_.GetBcc();
    const Json listed = value.is_array() ? value : Json::array({value});
    for (const Json& entry : listed) {
      const CMMAddr recipient = address(member, entry);
      list.Add(&recipient);
    }
  }

  void readWhen(const std::string& member, const Json& value) {
    const std::string spelled = octets(member, value);
    const auto record = parseWhen(spelled);
    if (!record) refuse(member, "'" + spelled + "' is no time or interval that can be written");
    if (member == "date") {
      if (record->wYear == 0) refuse(member, "an interval is no date");
      message_.SetDate(&*record);
    } else if (member == "expiry") {
      message_.SetExpiry(&*record);
    } else {
      message_.SetDeliveryTime(&*record);
    }
  }

  static void readContentType(const std::string& member, const Json& value, CMMPart& part) {
    CMMHdr& header = *part.Headers()->AddNew();
    if (!value.is_object()) {
      header.Assign("Content-Type", octets(member, value));
      return;
    }
    if (value.contains("type")) header.Assign("Content-Type", octets(member, value["type"]));
    for (const auto& [name, content] : pairs(member + ".parameters", value, "parameters")) {
      header.Params()->AddNew()->Assign(name, content);
    }
  }

  // The list of {"name", "value"} under `key`.
  static std::vector<std::pair<std::string, std::string>> pairs(const std::string& member,
                                                                const Json& value,
                                                                const char* key) {
    std::vector<std::pair<std::string, std::string>> list;
    if (!value.contains(key)) return list;
    if (!value[key].is_array()) refuse(member, "is no list");
    for (const Json& entry : value[key]) {
      if (!entry.is_object() || !entry.contains("name") || !entry.contains("value")) {
        refuse(member, "an entry has no name and value");
      }
      list.emplace_back(octets(member, entry["name"]), octets(member, entry["value"]));
    }
    return list;
  }

  void readBody(const Json& description) {
    CMMPart& root = *message_.Content();
    if (description.contains("contentType")) {
      readContentType("contentType", description["contentType"], root);
    }
    if (description.contains("content")) {
      readContent("content", description["content"], root);
    }
    if (!description.contains("parts")) return;
    if (description.contains("content")) refuse("content", "stands beside \"parts\"");
    if (!description["parts"].is_array()) refuse("parts", "is no list");
    if (root.Headers()->Count() == 0) {
      root.Headers()->AddNew()->Assign("Content-Type", "application/vnd.wap.multipart.mixed");
    }
    const std::string type = root.Headers()->First()->GetValue();
    if (!type.starts_with("multipart") && !type.starts_with("application/vnd.wap.multipart")) {
      refuse("parts", type + " has no parts: it is no multipart");
    }
    for (std::size_t i = 0; i < description["parts"].size(); ++i) {
      const std::string member = "parts[" + std::to_string(i) + "]";
      const Json& entry = description["parts"][i];
      if (!entry.is_object()) refuse(member, "is no object");
      readPart(member, entry);
    }
  }

  void readPart(const std::string& member, const Json& entry) {
    constexpr auto kMembers = std::to_array<std::string_view>(
        {"type", "parameters", "headers", "text", "base64", "file"});
    for (const auto& [name, value] : entry.items()) {
      if (std::ranges::find(kMembers, name) == kMembers.end()) {
        refuse(member + "." + name, "is not known");
      }
    }
    CMMPart part;
    if (!readContent(member, entry, part)) return;
    if (entry.contains("type")) {
      readContentType(member + ".type", entry, part);
    } else if (part.Headers()->Count() == 0) {
      part.Headers()->AddNew()->Assign("Content-Type", "text/plain");
    }
    for (const auto& [name, value] : pairs(member + ".headers", entry, "headers")) {
      part.Headers()->AddNew()->Assign(name, value);
    }
    *message_.Content()->NewChild() = std::move(part);
  }

  // False for a file that cannot be read and may be left out.
  bool readContent(const std::string& member, const Json& value, CMMPart& part) const {
    if (value.contains("file")) return readFile(member, value, part);
    const std::string octets = value.is_object() && value.contains("text")
                                   ? content(member + ".text", value["text"])
                                   : content(member, value);
    part.SetContent(octets.data(), static_cast<int>(octets.size()));
    return true;
  }

  bool readFile(const std::string& member, const Json& value, CMMPart& part) const {
    const std::string name = octets(member + ".file", value["file"]);
    const std::string path = name.starts_with('/') || folder_.empty() ? name : folder_ + "/" + name;
    if (!part.Load(path.c_str())) {
      if (force_) return false;
      refuse(member + ".file", path + " cannot be read");
    }
    if (!value.contains("type")) {
      const std::string type = mediaTypeOfFile(path);
      part.Headers()->AddNew()->Assign("Content-Type",
                                       type.empty() ? "application/octet-stream" : type);
    }
    return true;
  }

  std::string folder_;
  bool force_;
  CMMsg& message_;
};

}  // namespace

Json octetsJson(std::string_view octets) {
  if (isUtf8(octets)) return std::string(octets);
  return {{"base64", toBase64(octets)}};
}

Json parametersJson(const std::vector<InspectedParameter>& parameters) {
  Json list = Json::array();
  for (const InspectedParameter& parameter : parameters) {
    list.push_back({{"name", octetsJson(parameter.name)}, {"value", octetsJson(parameter.value)}});
  }
  return list;
}

Json describeMessage(const Inspection& inspection, std::string_view pdu) {
  Json message;
  message["type"] = inspection.messageTypeName;
  message["transactionId"] = nullptr;
  message["version"] = "";
  for (const InspectedField& field : inspection.fields) {
    if (field.page == 1 && field.code > 0) addField(message, field);
  }
  if (const InspectedField* type = inspection.find(kContentType); type != nullptr && type->text) {
    message["contentType"] = {{"type", octetsJson(*type->text)},
                              {"parameters", parametersJson(type->parameters)}};
  }
  if (inspection.multipart) {
    message["parts"] = Json::array();
    for (const InspectedPart& part : inspection.parts)
      message["parts"].push_back(partJson(part, pdu));
  } else {
    Json content = Json::object();
    const std::string type =
        message.contains("contentType") && message["contentType"]["type"].is_string()
            ? message["contentType"]["type"].get<std::string>()
            : "";
    addContent(content, type, pdu.substr(inspection.bodyOffset, inspection.bodyLength));
    message["content"] = content;
  }
  return message;
}

bool readMessage(const Json& description, const std::string& folder, bool force, CMMsg& message,
                 std::string& error) {
  try {
    Builder(folder, force, message).build(description);
    return true;
  } catch (const Refusal& refusal) {
    error = refusal.what();
  } catch (const Json::exception& refusal) {
    error = refusal.what();
  }
  return false;
}

}  // namespace mmsbrix::tool
