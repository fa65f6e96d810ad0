#include "show.h"

#include <mmsbrix/mms/charsets.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>
#include <ostream>

#include "message_json.h"

namespace mmsbrix::tool {
namespace {

constexpr std::size_t kMostOfAValue = 100;                    // octets of a value in the table
constexpr std::size_t kMostConverted = std::size_t{1} << 20;  // octets of a text part looked at

std::string shorten(const std::string& text) {
  if (text.size() <= kMostOfAValue) return text;
  std::size_t end = kMostOfAValue;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return text.substr(0, end) + "...";
}

std::string numberColumn(std::size_t number, std::size_t width) {
  const std::string text = std::to_string(number);
  return std::string(width - std::min(width, text.size()), ' ') + text;
}

std::string padded(const std::string& text, std::size_t width) {
  return text + std::string(width - std::min(width, text.size()), ' ');
}

void printHex(std::string_view octets, std::size_t offset, std::ostream& out) {
  constexpr std::size_t kPerLine = 16;
  for (std::size_t i = 0; i < octets.size(); i += kPerLine) {
    char cell[24];
    std::snprintf(cell, sizeof cell, "    %06zX ", offset + i);
    std::string line = cell;
    std::string characters;
    for (std::size_t k = i; k < i + kPerLine; ++k) {
      if (k >= octets.size()) {
        line += "   ";
        continue;
      }
      const auto octet = static_cast<unsigned char>(octets[k]);
      std::snprintf(cell, sizeof cell, " %02X", octet);
      line += cell;
      characters += octet >= 32 && octet < 127 ? octets[k] : '.';
    }
    out << line << "  " << characters << '\n';
  }
}

std::string parametersText(const std::vector<InspectedParameter>& parameters) {
  std::string text;
  for (const InspectedParameter& parameter : parameters) {
    text += "; " + printable(parameter.name) + '=' + printable(parameter.value);
  }
  return text;
}

class Printer {
 public:
  Printer(const Inspection& inspection, std::string_view pdu, bool hex, std::ostream& out)
      : inspection_(inspection), pdu_(pdu), hex_(hex), out_(out) {}

  void print() {
    out_ << (inspection_.messageTypeName.empty() ? "unknown PDU" : inspection_.messageTypeName)
         << ", " << octetCount(inspection_.size) << '\n';
    printFields();
    if (inspection_.multipart) {
      out_ << "\nparts: " << inspection_.parts.size() << '\n';
      printParts(inspection_.parts, "");
    } else if (inspection_.bodyLength > 0) {
      out_ << "\nbody: " << octetCount(inspection_.bodyLength) << " at offset "
           << inspection_.bodyOffset << '\n';
      const InspectedField* type = inspection_.find(0x04);
      printData(inspection_.bodyOffset, inspection_.bodyLength, type->text.value_or(""),
                type->parameters, "  ");
    }
    if (!inspection_.remarks.empty()) out_ << "\nremarks:\n";
    for (const Remark& remark : inspection_.remarks) {
      out_ << numberColumn(remark.offset, 7) << "  " << printable(remark.text) << '\n';
    }
  }

 private:
  void printFields() {
    if (inspection_.fields.empty()) return;
    std::size_t width = 5;
    for (const InspectedField& field : inspection_.fields)
      width = std::max(width, field.name.size());
    out_ << "\n offset  octets  " << padded("field", width) << "  value\n";
    for (const InspectedField& field : inspection_.fields) {
      std::string value = shorten(printable(field.value));
      if (field.charsetNumber) {
        value += "  (charset " +
                 (field.charset.empty() ? std::to_string(*field.charsetNumber) : field.charset) +
                 ")";
      }
      out_ << numberColumn(field.offset, 7) << ' ' << numberColumn(field.length, 7) << "  "
           << padded(printable(field.name), width) << "  " << value << '\n';
      if (hex_) printHex(pdu_.substr(field.offset, field.length), field.offset, out_);
    }
  }

  void printParts(const std::vector<InspectedPart>& parts, const std::string& prefix) {
    for (std::size_t i = 0; i < parts.size(); ++i) {
      const InspectedPart& part = parts[i];
      const std::string number = prefix + std::to_string(i + 1);
      out_ << "\n  " << number << ". "
           << (part.contentType.empty() ? "(no type)" : printable(part.contentType))
           << parametersText(part.parameters) << '\n';
      out_ << "     " << octetCount(part.dataLength) << " at offset " << part.dataOffset
           << ", headers " << part.headersLength << " at " << part.headersOffset << '\n';
      for (const InspectedHeader& header : part.headers) {
        out_ << "     " << printable(header.name) << ": " << shorten(printable(header.value))
             << parametersText(header.parameters) << '\n';
      }
      if (hex_)
        printHex(pdu_.substr(part.headersOffset, part.headersLength), part.headersOffset, out_);
      if (part.parts.empty()) {
        printData(part.dataOffset, part.dataLength, part.contentType, part.parameters, "     ");
      } else {
        printParts(part.parts, number + ".");
      }
    }
  }

  // Hex when wanted; else the beginning of a text.
  void printData(std::size_t offset, std::size_t length, const std::string& type,
                 const std::vector<InspectedParameter>& parameters, const char* indent) {
    const std::string_view data = pdu_.substr(offset, length);
    if (hex_) {
      printHex(data, offset, out_);
    } else if ((type.starts_with("text/") || type == "application/smil") && !data.empty()) {
      std::string charset;
      for (const InspectedParameter& parameter : parameters) {
        if (parameter.name == "Charset") charset = parameter.value;
      }
      // The whole text is converted: a cut could fall into a character.
      auto text = data.size() <= kMostConverted ? toUtf8(data, charset) : std::nullopt;
      if (!text) text = toUtf8(data.substr(0, kMostConverted), "");
      if (text) out_ << indent << '"' << shorten(printable(*text)) << "\"\n";
    }
  }

  const Inspection& inspection_;
  std::string_view pdu_;
  bool hex_;
  std::ostream& out_;
};

const char* kindName(RemarkKind kind) {
  switch (kind) {
    case RemarkKind::truncated:
      return "truncated";
    case RemarkKind::lengthPastEnd:
      return "length-past-end";
    case RemarkKind::wrongForm:
      return "wrong-form";
    case RemarkKind::badValue:
      return "bad-value";
    case RemarkKind::trailingOctets:
      return "trailing-octets";
    case RemarkKind::missingZero:
      return "missing-zero";
    case RemarkKind::order:
      return "order";
    case RemarkKind::duplicate:
      return "duplicate";
    case RemarkKind::missingField:
      return "missing-field";
    case RemarkKind::unknownField:
      return "unknown-field";
    case RemarkKind::unexpectedField:
      return "unexpected-field";
    case RemarkKind::strayZero:
      return "stray-zero";
    case RemarkKind::codePage:
      return "code-page";
    case RemarkKind::countMismatch:
      return "count-mismatch";
    case RemarkKind::crashPattern:
      return "crash-pattern";
    case RemarkKind::tooMany:
      return "too-many";
    case RemarkKind::notMms:
      return "not-mms";
  }
  return "";
}

Json fieldJson(const InspectedField& field, std::string_view pdu, bool hex) {
  Json json;
  json["name"] = octetsJson(field.name);
  if (field.code >= 0) json["code"] = field.code;
  if (field.page != 1) json["page"] = field.page;
  json["offset"] = field.offset;
  json["octets"] = field.length;
  json["value"] = octetsJson(field.value);
  if (field.number) json["number"] = *field.number;
  if (field.token) json["token"] = *field.token;
  if (field.charsetNumber) json["charset"] = *field.charsetNumber;
  if (!field.parameters.empty()) json["parameters"] = parametersJson(field.parameters);
  if (hex) json["base64"] = toBase64(pdu.substr(field.offset, field.length));
  return json;
}

Json partsJson(const std::vector<InspectedPart>& parts) {
  Json list = Json::array();
  for (const InspectedPart& part : parts) {
    Json json;
    json["offset"] = part.offset;
    json["headersOffset"] = part.headersOffset;
    json["headersOctets"] = part.headersLength;
    json["dataOffset"] = part.dataOffset;
    json["dataOctets"] = part.dataLength;
    if (part.statedDataLength != part.dataLength) json["statedDataOctets"] = part.statedDataLength;
    json["type"] = octetsJson(part.contentType);
    json["parameters"] = parametersJson(part.parameters);
    json["headers"] = Json::array();
    for (const InspectedHeader& header : part.headers) {
      Json entry = {{"name", octetsJson(header.name)},
                    {"value", octetsJson(header.value)},
                    {"offset", header.offset},
                    {"octets", header.length}};
      if (!header.parameters.empty()) entry["parameters"] = parametersJson(header.parameters);
      json["headers"].push_back(entry);
    }
    if (!part.parts.empty()) json["parts"] = partsJson(part.parts);
    list.push_back(json);
  }
  return list;
}

Json inspectionJson(const Inspection& inspection, const std::string& file, std::string_view pdu,
                    bool hex) {
  Json json;
  json["file"] = octetsJson(file);
  json["type"] = inspection.messageTypeName;
  json["typeOctet"] = inspection.messageType;
  json["octets"] = inspection.size;
  json["headerOctets"] = inspection.headerLength;
  json["fields"] = Json::array();
  for (const InspectedField& field : inspection.fields) {
    json["fields"].push_back(fieldJson(field, pdu, hex));
  }
  json["bodyOffset"] = inspection.bodyOffset;
  json["bodyOctets"] = inspection.bodyLength;
  if (inspection.multipart) json["parts"] = partsJson(inspection.parts);
  json["remarks"] = Json::array();
  for (const Remark& remark : inspection.remarks) {
    json["remarks"].push_back({{"kind", kindName(remark.kind)},
                               {"offset", remark.offset},
                               {"text", octetsJson(remark.text)}});
  }
  if (inspection.messageTypeName == "m-send-req")
    json["message"] = describeMessage(inspection, pdu);
  return json;
}

// Nothing in it looks like MMS: no table helps then.
bool isNoPdu(const Inspection& inspection) {
  return std::ranges::any_of(
             inspection.remarks,
             [](const Remark& remark) { return remark.kind == RemarkKind::notMms; }) &&
         inspection.messageTypeName.empty();
}

int showOne(const ShowCommand& command, const std::string& file, const Streams& streams) {
  std::string error;
  const auto content = readContent(file, streams.in, error);
  if (!content) {
    streams.err << "mmsbrix show: " << printable(error) << '\n';
    return kFailed;
  }
  const std::string_view pdu = charactersOf(*content);
  const Inspection inspection = inspect(pdu.data(), pdu.size());
  if (isNoPdu(inspection)) {
    streams.err << "mmsbrix show: " << printable(file)
                << ": offset 0: " << inspection.remarks.front().text << '\n';
    return kFailed;
  }
  if (command.json) {
    streams.out << inspectionJson(inspection, file, pdu, command.hex).dump(2) << '\n';
  } else {
    if (command.files.size() > 1) streams.out << printable(file) << ": ";
    printInspection(inspection, pdu, command.hex, streams.out);
  }
  return kDone;
}

}  // namespace

CLI::App* addShow(CLI::App& app, ShowCommand& command) {
  CLI::App* show =
      app.add_subcommand("show", "Show all that is in an MMS PDU, and what is odd about it");
  show->footer(
      "Examples:\n"
      "  mmsbrix show received.mms\n"
      "  mmsbrix show --hex - < received.mms\n"
      "  mmsbrix show --json received.mms | jq .remarks");
  show->add_option("FILE", command.files, "PDU, - for standard input")->required();
  show->add_flag("--json", command.json,
                 "Print JSON, from which `compose --json` makes the same message");
  show->add_flag("--hex", command.hex, "Show the octets too");
  return show;
}

int runShow(const ShowCommand& command, const Streams& streams) {
  int result = kDone;
  for (std::size_t i = 0; i < command.files.size(); ++i) {
    if (i > 0 && !command.json) streams.out << '\n';
    result = std::max(result, showOne(command, command.files[i], streams));
  }
  return result;
}

void printInspection(const Inspection& inspection, std::string_view pdu, bool hex,
                     std::ostream& out) {
  Printer(inspection, pdu, hex, out).print();
}

}  // namespace mmsbrix::tool
