#include "mms/field_values.h"

#include <cstdio>

#include "mms/charsets.h"
#include "mms/content_type.h"
#include "mms/item_cost.h"
#include "mms/mms_values.h"
#include "wsp/wap_mms_shared.h"
#include "wsp/wsp_date.h"

namespace mmsbrix {
namespace {

// The text as UTF-8 for people; octets that cannot be converted show as Latin-1.
std::string forPeople(std::string_view text, std::string_view charset) {
  if (auto converted = toUtf8(text, charset)) return *std::move(converted);
  return toUtf8(text, "").value_or(std::string());
}

void setText(InspectedField& field, const EncodedString& string) {
  field.text = string.text;
  field.charset = string.charset;
  if (string.charsetNumber) {
    field.charsetNumber = static_cast<std::uint32_t>(*string.charsetNumber);
  }
  field.value = forPeople(string.text, string.charset);
}

std::string describeAddress(Reader& in, InspectedField& field) {
  setText(field, readEncodedString(in));
  return field.text->empty() ? "the address is empty" : "";
}

std::string describeOctet(const FieldRow& row, std::uint8_t octet, InspectedField& field) {
  const std::string_view name = octetName(row.octets, octet);
  field.number = octet;
  field.value = name.empty() ? octetText(octet) : std::string(name);
  return name.empty() ? octetText(octet) + " stands for nothing here" : "";
}

std::string describeSeconds(std::uint64_t seconds, InspectedField& field) {
  field.number = seconds;
  field.value = utcText(seconds);
  return seconds == 0 ? "the time is 0" : "";
}

// The values that begin with a value-length; `in` is what it counts.
std::string describePrefixed(const FieldRow& row, Reader in, InspectedField& field) {
  if (row.kind == FieldKind::previouslySentBy || row.kind == FieldKind::previouslySentDate) {
    const auto count = readInteger(in);
    if (!count) return "the count is missing";
    field.token = static_cast<std::uint8_t>(*count);
    std::string wrong;
    if (row.kind == FieldKind::previouslySentBy) {
      wrong = describeAddress(in, field);
    } else if (const auto seconds = readLongInteger(in)) {
      wrong = describeSeconds(*seconds, field);
    } else {
      wrong = "the date is missing";
    }
    field.value = std::to_string(*count) + ": " + field.value;
    return wrong;
  }
  field.token = in.octet();
  if (!field.token) return "the value is empty";
  const std::uint8_t token = *field.token;
  if (row.kind == FieldKind::from) {
    if (token == kInsertAddressToken) {
      field.value = "(to be inserted by the relay)";
      return in.atEnd() ? "" : "octets follow the insert-address token";
    }
    if (token != kAddressPresentToken) return "the token " + octetText(token) + " is unknown";
    return describeAddress(in, field);
  }
  if (row.kind == FieldKind::tokenDate) {
    const auto seconds = readInteger(in);
    if (!seconds) return "the time is missing";
    if (token == kRelativeToken) {
      field.number = *seconds;
      field.value = "in " + intervalText(*seconds);
      return "";
    }
    const std::string wrong = describeSeconds(*seconds, field);
    return token == kAbsoluteToken ? wrong : "the token " + octetText(token) + " is unknown";
  }
  // Flags and totals: a named token, then a text or a number.
  const std::string_view name = octetName(row.octets, token);
  const std::string shown = name.empty() ? octetText(token) : std::string(name);
  if (row.kind == FieldKind::flags) {
    setText(field, readEncodedString(in));
  } else if (const auto number = readInteger(in)) {
    field.number = *number;
    field.value = std::to_string(*number);
  } else {
    field.value = shown;
    return "the number is missing";
  }
  field.value = shown + ": " + field.value;
  return name.empty() ? "the token " + octetText(token) + " is unknown" : "";
}

std::string describeContentType(Octets value, InspectedField& field, ItemBudget& budget) {
  ContentTypeReader reader = contentTypeReader(value);
  field.text = reader.mediaType();
  field.number = reader.mediaNumber();
  field.value = reader.mediaType();
  Parameter parameter;
  while (reader.next(parameter)) {
    if (!budget.take(parameterCost(parameter, field.parameters.size()))) {
      return "more parameters than are shown";
    }
    const std::string name =
        parameter.name.empty() ? "parameter " + octetText(static_cast<std::uint8_t>(parameter.code))
                               : std::string(parameter.name);
    field.parameters.push_back({name, std::string(parameter.value)});
    field.value += "; " + name + '=' + forPeople(parameter.value, "");
  }
  if (reader.stoppedEarly()) return "a parameter cannot be read";
  if (!reader.mediaType().empty()) return "";
  if (!reader.mediaNumber()) return "there is no media type";
  return "media type number " + std::to_string(*reader.mediaNumber()) + " is not assigned";
}

}  // namespace

std::string utcText(std::uint64_t secondsSince1970) {
  const WapStack::DateFields date = WapStack::dateFields(secondsSince1970);
  if (date.year > 9999) return std::to_string(secondsSince1970) + " s after 1970";
  char text[32];
  std::snprintf(text, sizeof text, "%04u-%02d-%02dT%02d:%02d:%02dZ",
                static_cast<unsigned>(date.year), date.month + 1, date.day, date.hour, date.minute,
                date.second);
  return text;
}

std::string intervalText(std::uint64_t seconds) {
  struct Unit {
    std::uint64_t seconds;
    const char* name;
  };
  constexpr Unit kUnits[] = {{86400, " d"}, {3600, " h"}, {60, " min"}, {1, " s"}};
  std::string text;
  for (const Unit& unit : kUnits) {
    if (const std::uint64_t count = seconds / unit.seconds; count > 0) {
      if (!text.empty()) text += ' ';
      text += std::to_string(count) + unit.name;
    }
    seconds %= unit.seconds;
  }
  return text.empty() ? "0 s" : text;
}

std::string hexText(Octets octets) {
  constexpr std::size_t kMostShown = 32;
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t octet : octets.first(std::min(octets.size(), kMostShown))) {
    if (!text.empty()) text += ' ';
    text += kDigits[octet >> 4];
    text += kDigits[octet & 15];
  }
  if (octets.size() > kMostShown) text += " ...";
  return text;
}

std::string octetText(std::uint8_t octet) {
  char text[8];
  std::snprintf(text, sizeof text, "0x%02X", static_cast<unsigned>(octet));
  return text;
}

std::string describeValue(const FieldRow& row, const HeaderItem& item, InspectedField& field,
                          ItemBudget& budget) {
  Reader in(item.value);
  switch (row.kind) {
    case FieldKind::octet:
      return describeOctet(row, *in.octet(), field);
    case FieldKind::messageClass:
      if (item.form == ValueForm::shortInteger) return describeOctet(row, *in.octet(), field);
      [[fallthrough]];
    case FieldKind::text:
      setText(field, EncodedString{readTextString(in), {}, std::nullopt});
      return field.text->empty() ? "the text is empty" : "";
    case FieldKind::version: {
      const std::uint8_t octet = *in.octet();
      field.number = octet;
      field.value = std::to_string((octet >> 4) & 7) + '.' + std::to_string(octet & 15);
      return "";
    }
    case FieldKind::encodedString:
      setText(field, readEncodedString(in));
      return "";
    case FieldKind::address:
      return describeAddress(in, field);
    case FieldKind::longInteger:
    case FieldKind::integer: {
      const auto number = readInteger(in);
      if (!number) return "the number cannot be read";
      field.number = *number;
      field.value = std::to_string(*number);
      return "";
    }
    case FieldKind::date: {
      const auto seconds = readLongInteger(in);
      return seconds ? describeSeconds(*seconds, field) : "the date cannot be read";
    }
    case FieldKind::contentType:
      return describeContentType(item.value, field, budget);
    case FieldKind::opaque:
      field.value = hexText(item.value);
      return "";
    case FieldKind::from:
    case FieldKind::tokenDate:
    case FieldKind::previouslySentBy:
    case FieldKind::previouslySentDate:
    case FieldKind::flags:
    case FieldKind::tokenInteger: {
      const auto length = readValueLength(in);
      return length ? describePrefixed(row, in.sub(*length), field) : "its length cannot be read";
    }
  }
  return "";
}

}  // namespace mmsbrix
