// Inspecting PDUs.
#include "mms/inspector.h"

#include <memory>

#include "capi/support.h"

struct mmsbrix_inspection {
  mmsbrix::Inspection inspection;
};

using mmsbrix::capi::guarded;

mmsbrix_status mmsbrix_inspect(const void* data, size_t size, mmsbrix_inspection** inspection) {
  if (inspection == nullptr || (data == nullptr && size != 0)) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    auto made = std::make_unique<mmsbrix_inspection>();
    made->inspection = mmsbrix::inspect(data, size);
    *inspection = made.release();
    return MMSBRIX_OK;
  });
}

void mmsbrix_inspection_free(mmsbrix_inspection* inspection) {
  delete inspection;
}

int32_t mmsbrix_inspection_type(const mmsbrix_inspection* inspection) {
  return inspection == nullptr ? 0 : inspection->inspection.messageType;
}

size_t mmsbrix_inspection_field_count(const mmsbrix_inspection* inspection) {
  return inspection == nullptr ? 0 : inspection->inspection.fields.size();
}

mmsbrix_status mmsbrix_inspection_field(const mmsbrix_inspection* inspection, size_t index,
                                        mmsbrix_field* field) {
  if (inspection == nullptr || field == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  if (index >= inspection->inspection.fields.size()) return MMSBRIX_NOT_PRESENT;
  const mmsbrix::InspectedField& from = inspection->inspection.fields[index];
  *field = {from.offset,       from.length,      from.code,          from.page,
            from.name.c_str(), from.name.size(), from.value.c_str(), from.value.size()};
  return MMSBRIX_OK;
}

size_t mmsbrix_inspection_remark_count(const mmsbrix_inspection* inspection) {
  return inspection == nullptr ? 0 : inspection->inspection.remarks.size();
}

mmsbrix_status mmsbrix_inspection_remark(const mmsbrix_inspection* inspection, size_t index,
                                         mmsbrix_remark* remark) {
  if (inspection == nullptr || remark == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  if (index >= inspection->inspection.remarks.size()) return MMSBRIX_NOT_PRESENT;
  const mmsbrix::Remark& from = inspection->inspection.remarks[index];
  *remark = {from.offset, static_cast<int32_t>(from.kind), from.text.c_str(), from.text.size()};
  return MMSBRIX_OK;
}
