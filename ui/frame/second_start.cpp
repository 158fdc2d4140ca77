#include "ui/frame/second_start.h"

#include "ui/frame/frame.h"

namespace vexa {

namespace {

// What the numbers of WM_COPYDATA ask for; its data is the path in UTF-16, without a NUL.
enum Handed : ULONG_PTR {
  kTakeIfOpen = 0x56455831,  // only a program that has the file open takes it
  kTake,
};
constexpr UINT kAnswerTime = 5000;  // ms

// The frames that take files have a property of this name.
std::wstring PropertyOf(const std::wstring& kind) {
  return L"VexaEditorTakesFiles" + kind;
}

bool Takes(HWND frame, const Path& path, Handed request) {
  DWORD process = 0;
  GetWindowThreadProcessId(frame, &process);
  // The running program may come to the front: the user has just asked for it here.
  AllowSetForegroundWindow(process);
  const std::wstring& text = path.native();
  COPYDATASTRUCT data{request, static_cast<DWORD>(text.size() * sizeof(wchar_t)),
                      const_cast<wchar_t*>(text.data())};
  DWORD_PTR taken = 0;
  return SendMessageTimeoutW(frame, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data), SMTO_ABORTIFHUNG,
                             kAnswerTime, &taken) &&
         taken != 0;
}

// The dialog over the frame, when there is one, is what the user has to see.
void ComeToFront(HWND frame) {
  if (IsIconic(frame)) ShowWindow(frame, SW_RESTORE);
  SetForegroundWindow(GetLastActivePopup(frame));
}

}  // namespace

void TakeHandedOver(HWND frame, const std::wstring& kind) {
  SetPropW(frame, PropertyOf(kind).c_str(), frame);
}

bool HandOver(const Path& path, const std::wstring& kind) {
  const std::wstring property = PropertyOf(kind);
  for (const Handed request : {kTakeIfOpen, kTake}) {
    HWND frame = nullptr;
    while ((frame = FindWindowExW(nullptr, frame, kFrameClass, nullptr)) != nullptr) {
      if (GetPropW(frame, property.c_str()) && Takes(frame, path, request)) return true;
    }
  }
  return false;
}

bool AnswerSecondStart(Application& app, const COPYDATASTRUCT& handed) {
  if (handed.dwData != kTakeIfOpen && handed.dwData != kTake) return false;
  const Path path(std::wstring(static_cast<const wchar_t*>(handed.lpData), handed.cbData / sizeof(wchar_t)));
  if (app.must_end || (handed.dwData == kTakeIfOpen && !IsOpen(app, path))) return false;
  ComeToFront(app.frame);
  // Opened once the other program has its answer, as the file may have something to say.
  OpenLater(app, path);
  return true;
}

}  // namespace vexa
