#include "smil/smiltiming.h"

#include <string>

#include "smil/attribute_values.h"

int CSMILTimingAttr::timeOf(const char* name) {
  const CSMILAttr* attribute = FindAttribute(name);
  return attribute == nullptr ? 0 : mmsbrix::leadingNumber(attribute->GetValue());
}

void CSMILTimingAttr::putTime(const char* name, int milliseconds) {
  if (milliseconds == 0) {
    RemoveAttribute(name);
    return;
  }
  CSMILAttr attribute(name, (std::to_string(milliseconds) + "ms").c_str());
  AddAttribute(&attribute);
}
