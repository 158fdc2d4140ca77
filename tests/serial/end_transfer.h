// The end of a transfer in a test, on a machine that may be busy.
#pragma once

#include "serial/session.h"

namespace vexa {

// As CancelTransfer; but a thread that does not answer in its time is waited for, up to a minute: a session
// is not destroyed below its threads.
inline bool EndTransfer(TransferSession& session) {
  bool ended = CancelTransfer(session);
  for (int more = 12; session.left_behind && more > 0; --more) ended = CancelTransfer(session);
  return ended;
}

}  // namespace vexa
