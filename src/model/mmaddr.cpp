#include "model/mmaddr.h"

template class mmsbrix::CMMList<CMMAddr>;

CMMAddr::CMMAddr(const char* text, TYPE type) : value_(text), type_(type) {}

CMMAddr::CMMAddr(const CMMString* value, TYPE type) : value_(*value), type_(type) {}
