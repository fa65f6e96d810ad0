/// @file
/// Everything the library offers, in one include.
#ifndef MMSBRIX_MMSBRIX_H
#define MMSBRIX_MMSBRIX_H

#include "convert/extraction.h"
#include "convert/file_names.h"
#include "convert/media_types.h"
#include "convert/mmsconvert.h"
#include "convert/references.h"
#include "convert/replies.h"
#include "convert/slides.h"
#include "export.h"
#include "mms/charsets.h"
#include "mms/dates.h"
#include "mms/inspector.h"
#include "mms/message_view.h"
#include "mms/mmscodec.h"
#include "mms/receiving.h"
#include "mms/transaction_id.h"
#include "model/address_text.h"
#include "model/mmsg.h"
#include "smil/parse_error.h"
#include "smil/smilcodec.h"
#include "transport/mmshttp.h"
#include "transport/mmswap.h"
#include "transport/operators.h"
#include "transport/push_listener.h"
#include "transport/trace_log.h"
#include "transport/wap_gateway.h"
#include "transport/wap_stack.h"
#include "version.h"
#include "wsp/diagnostics.h"
#include "wsp/header_block.h"

#endif  // MMSBRIX_MMSBRIX_H
