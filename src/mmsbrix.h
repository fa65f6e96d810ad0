// Everything the library offers, in one include.
#ifndef MMSBRIX_MMSBRIX_H
#define MMSBRIX_MMSBRIX_H

#include "export.h"
#include "wsp/diagnostics.h"

#endif  // MMSBRIX_MMSBRIX_H
