/// @file
/// Messages to octets and back: the binary MMS encapsulation, in memory and in ".mms" files.
/// [OMA-MMS-ENC 6, 7; WAP-230 8.4, 8.5]
///
/// Dates are converted in the machine's local time zone.
#ifndef MMSBRIX_MMS_MMSCODEC_H
#define MMSBRIX_MMS_MMSCODEC_H

#include "../export.h"
#include "../model/mmsg.h"

extern "C" {

/// Encodes an m-send-req.  `*data` receives a buffer from malloc that the caller releases with
/// `free` or `MMS_Free` (null when nothing was written), `*size` its length in octets.  Returns 1;
/// 0 when a multipart body could not be completed because a part has no content or no Content-Type,
/// in which case what was written up to there is handed over, and when there is not enough memory,
/// in which case nothing is.  A message of any other type gives 1 and nothing.  `flags` selects
/// nothing; pass 0.
MMSBRIX_API int MMS_SaveToMemory(CMMsg* msg, void** data, unsigned int* size, unsigned long flags);

/// Encodes to a file, replacing an existing one, which stays as it was when anything fails. Returns
/// the octets written; 0 on failure, and for a message that is no m-send-req, which leaves an empty
/// file.  Where files are the reason, errno says why on POSIX systems.  `flags` selects nothing;
/// pass 0.
MMSBRIX_API unsigned int MMS_Save(CMMsg* msg, const char* path, unsigned long flags);

/// Clears `msg` and fills it from `size` octets of any MMS PDU.  1 whatever the octets: what is
/// broken or cut off leaves the message filled with what is there.  0 with `msg` cleared when there
/// is not enough memory.  Nothing outside the buffer is read.  `flags` selects nothing; pass 0.
MMSBRIX_API int MMS_LoadFromMemory(const void* data, unsigned int size, CMMsg* msg,
                                   unsigned long flags);

/// Reads a file and decodes it.  1, or 0: with `msg` untouched when the file cannot be opened or
/// read, untouched or cleared when there is not enough memory.  `flags` selects nothing; pass 0.
MMSBRIX_API int MMS_Load(const char* path, CMMsg* msg, unsigned long flags);

/// Releases a buffer that the library handed out, for callers in another heap.  Null is fine.
MMSBRIX_API void MMS_Free(void* data);

}  // extern "C"

#endif  // MMSBRIX_MMS_MMSCODEC_H
