#include "capi/support.h"
#include "version.h"

const char* mmsbrix_status_text(mmsbrix_status status) {
  switch (status) {
    case MMSBRIX_OK:
      return "done";
    case MMSBRIX_INVALID_ARGUMENT:
      return "an argument means nothing";
    case MMSBRIX_NOT_PRESENT:
      return "there is no such thing";
    case MMSBRIX_NO_MEMORY:
      return "there is not enough memory";
    case MMSBRIX_CANNOT_READ:
      return "the file cannot be read";
    case MMSBRIX_CANNOT_WRITE:
      return "the file cannot be written";
    case MMSBRIX_NOT_MMS:
      return "this is no MMS PDU";
    case MMSBRIX_INCOMPLETE:
      return "the message has no recipient or no content";
    case MMSBRIX_FAILED:
      return "the relay did not do it";
    case MMSBRIX_NOT_SUPPORTED:
      return "a WAP gateway takes messages only";
    default:
      return "an error inside the library";
  }
}

const char* mmsbrix_version(void) {
  return mmsbrix::version();
}

void mmsbrix_free(void* data) {
  std::free(data);
}
