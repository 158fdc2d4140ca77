#include "ui/frame/recovery.h"

#include <atomic>
#include <iterator>

#include "core/messages.h"
#include "ui/controls/guard.h"
#include "ui/editor/editor.h"
#include "ui/frame/frame.h"
#include "view/recovery.h"

namespace vexa {

namespace {

constexpr UINT_PTR kRecoveryTimer = 1;
constexpr UINT kRecoveryInterval = 10000;  // milliseconds
constexpr USHORT kDeepest = 48;            // places of a report's stack

constexpr const char* kNotKept = "Unsaved work cannot be kept for the case that the program fails.";

Application* running = nullptr;  // for the handler, which is handed nothing

// In the user's own data; a test keeps out of it.
Path RecoveryRoot(const Application& app) {
  if (const auto named = PathOfEnvironment("VEXA_RECOVERY")) return *named;
  const auto data = PathOfEnvironment("LOCALAPPDATA");
  return data && !app.describe_menus ? *data / "Vexa Editor" / "Recovery" : Path();
}

Outcome KeepWorkOf(Application& app, const EditorWindow& editor) {
  const UnsavedWork work = {editor.path,    editor.name,    editor.file_state,
                            editor.version, LocalTimeNow(), editor.imported_from};
  return app.recovery->Keep(NumberOfKept(editor), editor.history.turn, work, editor.document);
}

// Not done when some of it could not be kept.
Outcome KeepWork(Application& app) {
  Outcome all;
  for (const EditorWindow* editor : AllEditors(app)) {
    if (!editor->changed) {
      app.recovery->Forget(NumberOfKept(*editor));
    } else if (const Outcome kept = KeepWorkOf(app, *editor); !kept) {
      all = kept;
    }
  }
  return all;
}

// Whether it has a window and is kept anew.
bool OpenRecovered(Application& app, RecoveredWork& recovered) {
  UnsavedWork& work = recovered.work;
  // Two programs may have kept work on one file: the second window bears its name alone.
  const bool taken = !work.path.empty() && EditorOfFile(app, work.path);
  EditorWindow* editor = OpenEditor(app, std::move(recovered.document), taken ? Path() : work.path, true,
                                    taken ? work.path : work.list);
  if (!editor) return false;
  if (!taken) editor->file_state = work.state;
  editor->version = work.version;
  return static_cast<bool>(KeepWorkOf(app, *editor));
}

// A box may not come over another job, a dialog, a menu or records that are dragged.
bool MayTell(const Application& app) {
  return app.busy == 0 && IsWindowEnabled(app.frame) && !GetCapture();
}

// "VexaEditor.exe+1a2b": a place in a module tells the same on every machine.
std::string PlaceOf(const void* address) {
  HMODULE module = nullptr;
  wchar_t path[MAX_PATH] = L"";
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     static_cast<const wchar_t*>(address), &module);
  if (!module || !GetModuleFileNameW(module, path, std::size(path))) return Format("%p", address);
  const auto offset =
      reinterpret_cast<UINT_PTR>(address) - reinterpret_cast<UINT_PTR>(static_cast<void*>(module));
  return Format("%s+%llx", Utf8FromPath(Path(path).filename()).c_str(),
                static_cast<unsigned long long>(offset));
}

std::string ReportOf(const char* thrown, const EXCEPTION_POINTERS* failure, const LocalTime& time) {
  std::string text =
      Format("Vexa Editor %d.%d.%d, %s, %d bit\n%04d-%02d-%02d %02d:%02d:%02d\n", kVersionMajor,
             kVersionMinor, kVersionBuild, kProjectId, static_cast<int>(sizeof(void*) * 8), time.year,
             time.month, time.day, time.hour, time.minute, time.second);
  if (thrown) text += Format("exception: %s\n", thrown);
  if (failure) {
    const EXCEPTION_RECORD& record = *failure->ExceptionRecord;
    text += Format("failure %08lx at %s\n", record.ExceptionCode, PlaceOf(record.ExceptionAddress).c_str());
  }
  void* places[kDeepest] = {};
  const USHORT count = CaptureStackBackTrace(0, kDeepest, places, nullptr);
  for (USHORT i = 0; i < count; ++i) text += PlaceOf(places[i]) + "\n";
  return text;
}

// The report's path; empty when it could not be written.
Path WriteReport(const Path& folder, const char* thrown, const EXCEPTION_POINTERS* failure) {
  const LocalTime time = LocalTimeNow();
  const std::string text = ReportOf(thrown, failure, time);
  const Path path = folder / Format("report %04d-%02d-%02d %02d-%02d-%02d.txt", time.year, time.month,
                                    time.day, time.hour, time.minute, time.second);
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  return WriteWholeFile(path, {bytes, text.size()}) == WriteResult::kDone ? path : Path();
}

LONG WINAPI EndAfterFailure(EXCEPTION_POINTERS* failure) {
  LeaveReport(nullptr, failure);
  TerminateProcess(GetCurrentProcess(), 1);
  return EXCEPTION_CONTINUE_SEARCH;
}

bool IsFailure(DWORD code) {
  return code == EXCEPTION_ACCESS_VIOLATION || code == EXCEPTION_ILLEGAL_INSTRUCTION ||
         code == EXCEPTION_INT_DIVIDE_BY_ZERO || code == EXCEPTION_IN_PAGE_ERROR;
}

// The window system may pass over a failure inside a window procedure, and the program would go on with
// halves. The program itself handles none of these, so one in its own code is its end.
LONG WINAPI SeeFailure(EXCEPTION_POINTERS* failure) {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     static_cast<const wchar_t*>(failure->ExceptionRecord->ExceptionAddress), &module);
  const bool own = module == GetModuleHandleW(nullptr);
  return own && IsFailure(failure->ExceptionRecord->ExceptionCode) ? EndAfterFailure(failure)
                                                                   : EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

void StartRecovery(Application& app) {
  const Path root = RecoveryRoot(app);
  if (root.empty()) return;
  std::string why;
  app.recovery = Recovery::Start(root, why);
  if (!app.recovery) {
    TellWhy(app.context.messages, Icon::kWarning, why, "%s", kNotKept);
    return;
  }
  SetTimer(app.frame, kRecoveryTimer, kRecoveryInterval, nullptr);
}

void OfferAbandonedWork(Application& app) {
  if (!app.recovery) return;
  AbandonedWork abandoned(app.recovery->path().parent_path());
  if (abandoned.works().empty()) return;
  const Answer answer = AskYesNoCancel(app, abandoned.Question());
  if (answer == Answer::kCancel) return;
  if (answer == Answer::kNo) return abandoned.Remove();
  abandoned.HandOver([&app](RecoveredWork& work) { return OpenRecovered(app, work); });
}

void KeepUnsavedWork(Application& app) {
  if (!app.recovery) return;
  const Outcome kept = KeepWork(app);
  if (!app.recovery->MustTell(kept.done, MayTell(app))) return;
  TellWhy(app.context.messages, Icon::kWarning, WriteReason(app.recovery->path(), kept.error), "%s",
          kNotKept);
}

void LeaveUnsavedWork(Application& app) {
  KeepUnsavedWork(app);
  app.recovery.reset();
}

void LeaveReport(const char* thrown, const EXCEPTION_POINTERS* failure) noexcept {
  static std::atomic<bool> failed{false};
  if (failed.exchange(true) || !running) return;  // a failure in here ends the program
  try {
    Application& app = *running;
    std::string text = thrown ? thrown + std::string("\n\n") : "";
    text += "Vexa Editor has failed and ends now.";
    if (app.recovery) {
      const Path report = WriteReport(app.recovery->path().parent_path(), thrown, failure);
      if (!report.empty())
        text +=
            "\n\nA report without any of your data, for the maker of the program:\n" + Utf8FromPath(report);
      if (KeepWork(app)) text += "\n\nWhat was not saved is kept, and offered at the next start.";
    }
    if (app.frame) KillTimer(app.frame, kRecoveryTimer);
    app.folder.reset();
    MessageBoxW(nullptr, Wide(text).c_str(), Wide(app.title).c_str(), MB_ICONSTOP | MB_TASKMODAL);
  } catch (...) {  // as much is left as could be
  }
}

void HandleFailures(Application& app) {
  running = &app;
  AddVectoredExceptionHandler(1, SeeFailure);
  SetUnhandledExceptionFilter(EndAfterFailure);
}

}  // namespace vexa
