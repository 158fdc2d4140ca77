// Memory that runs out while a window procedure works: no exception may pass through the window system. What
// was under way is given up, the user is told, and the program goes on with its databases.
#pragma once

#include <new>

#include "ui/controls/windows_api.h"

namespace vexa {

struct Application;

// The message that the frame gets then; it answers with TellOutOfMemory.
inline constexpr UINT kOutOfMemory = WM_APP + 3;

// Where to send it. Without a frame the program ends, as nothing can be lost yet.
void SetGuardedFrame(HWND frame) noexcept;
// Leaves the message for the frame, as a procedure that draws must show no box. Allocates nothing.
void NoteOutOfMemory() noexcept;
void TellOutOfMemory(const Application& app) noexcept;

// What `work` gives, or `otherwise` when memory ran out in it.
template <class Result, class Work>
Result Guarded(Result otherwise, const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    NoteOutOfMemory();
    return otherwise;
  }
}

}  // namespace vexa
