#include "ui/controls/guard.h"

#include <atomic>
#include <exception>
#include <iterator>

#include "core/out_of_memory.h"
#include "ui/controls/application.h"

namespace vexa {

namespace {

std::atomic<HWND> guarded_frame{nullptr};
std::atomic<bool> noted{false};  // and not told yet

}  // namespace

void SetGuardedFrame(HWND frame) noexcept {
  guarded_frame = frame;
}

void NoteOutOfMemory() noexcept {
  if (!guarded_frame) std::terminate();
  if (!noted.exchange(true)) PostMessageW(guarded_frame, kOutOfMemory, 0, 0);
}

void TellOutOfMemory(const Application& app) noexcept {
  wchar_t text[256] = L"", title[64] = L"";
  for (size_t i = 0; kOutOfMemoryText[i] && i + 1 < std::size(text); ++i)
    text[i] = static_cast<wchar_t>(kOutOfMemoryText[i]);
  GetWindowTextW(app.frame, title, std::size(title));
  MessageBoxW(OwnerWindow(app), text, title, MB_OK | MB_ICONSTOP | MB_APPLMODAL);
  noted = false;
}

}  // namespace vexa
