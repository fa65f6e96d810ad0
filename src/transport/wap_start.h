// Starting the protocol stack, once per process.
#ifndef MMSBRIX_TRANSPORT_WAP_START_H
#define MMSBRIX_TRANSPORT_WAP_START_H

#include "wapstack/apidrvvtask.h"

namespace mmsbrix {

/// The stack, started with its settings and with traces of its datagrams unless it runs.  A stack
/// that could not be started creates no ports.
ApiDriverTask& startWapStack();

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_WAP_START_H
