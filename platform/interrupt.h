// The requests of a user or the system to end: Ctrl+C, a request to terminate, a closed terminal.
#pragma once

namespace vexa {

// While one lives, such a request only sets a flag, ends a read that waits, and the program goes in order.
// What was ignored when the object was made stays ignored, as whoever started the program wants it. A closed
// pipe is an ordinary failure of the write. One object at a time.
class InterruptWatch {
 public:
  // Takes the requests over until the object goes.
  InterruptWatch();
  // Takes them to the end of the process, so that none ends it between the watch's last look and its exit:
  // one that comes while no object lives is kept for the next.
  static void TakeToTheEnd();
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
  // Whether a request came since the object was made; false when none lives, unless they are taken to the
  // end.
  static bool IsInterrupted();
};

}  // namespace vexa
