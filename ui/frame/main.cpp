// The program's entry point.
#include "ui/controls/windows_api.h"
// After windows.h.
#include <objbase.h>
#include <shellapi.h>

#include <exception>
#include <new>

#include "core/messages.h"
#include "core/out_of_memory.h"
#include "ui/controls/application.h"
#include "ui/frame/frame.h"
#include "ui/frame/menus.h"
#include "ui/frame/recovery.h"
#include "ui/frame/second_start.h"
#include "ui/frame/test_mode.h"

namespace vexa {

namespace {

constexpr const wchar_t* kTestMode = L"--test-mode";
constexpr const wchar_t* kHandOver = L"--hand-over=";

// Settings of a test run lie in a key of its own, which stands in for the whole of the user's.
void RedirectSettings(const std::wstring& name) {
  HKEY key = nullptr;
  const std::wstring path = L"Software\\VexaEditorTests\\" + name;
  if (RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                      nullptr) == ERROR_SUCCESS) {
    RegOverridePredefKey(HKEY_CURRENT_USER, key);
    RegCloseKey(key);
  }
}

// --test-mode keeps settings in memory, --test-mode=NAME in a key for tests; --hand-over=NAME lets test
// programs of that name hand over files; anything else is a file to open. The kind of program that takes
// files from others and hands them over; nothing for one that stays alone, as other test programs do.
std::optional<std::wstring> ReadArguments(Application& app) {
  std::optional<std::wstring> kind;
  app.settings = SystemSettingsStore();
  int count = 0;
  wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  for (int i = 1; arguments && i < count; ++i) {
    const std::wstring argument = arguments[i];
    if (argument.starts_with(kTestMode)) app.describe_menus = RegisterWindowMessageW(kTestMessage);
    if (argument == kTestMode) {
      app.settings = MemorySettingsStore();
    } else if (argument.starts_with(std::wstring(kTestMode) + L"=")) {
      RedirectSettings(argument.substr(wcslen(kTestMode) + 1));
    } else if (argument.starts_with(kHandOver)) {
      kind = argument.substr(wcslen(kHandOver));
    } else if (!app.open_at_start && GetFileAttributesW(argument.c_str()) != INVALID_FILE_ATTRIBUTES) {
      std::error_code error;
      const Path path = std::filesystem::absolute(argument, error);
      app.open_at_start = error ? Path(argument) : path;
    }
  }
  LocalFree(arguments);
  app.settings = ToldSettings(app.settings, app.context.messages);
  return app.describe_menus ? kind : std::wstring();
}

// No exception may pass through the window system, so every procedure that it calls is noexcept: what one of
// them lets out ends here.
[[noreturn]] void EndAfterException() {
  try {
    if (const std::exception_ptr thrown = std::current_exception()) std::rethrow_exception(thrown);
  } catch (const std::bad_alloc&) {
    LeaveReport(kOutOfMemoryText, nullptr);
  } catch (const std::exception& thrown) {
    LeaveReport(thrown.what(), nullptr);
  } catch (...) {
  }
  LeaveReport(nullptr, nullptr);
  ExitProcess(1);
}

int RunEditor(HINSTANCE instance) {
  Application app;
  app.instance = instance;
  app.context.messages = BoxMessages(app);
  HandleFailures(app);
  std::set_terminate(EndAfterException);
  const std::optional<std::wstring> kind = ReadArguments(app);
  if (kind && app.open_at_start && HandOver(*app.open_at_start, *kind)) return 0;
  app.thread_exit_event = CreateEventW(nullptr, TRUE, FALSE, app.describe_menus ? kTestExitEvent : nullptr);
  if (!app.thread_exit_event) {
    TellWhy(app.context.messages, Icon::kStop, LastErrorText(),
            "Failed to create event( Thread exit event ).");
  }
  INITCOMMONCONTROLSEX controls{sizeof controls, ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES | ICC_BAR_CLASSES};
  InitCommonControlsEx(&controls);
  int status = 1;
  if (RegisterClasses(app)) {
    LoadMenus(app);
    const bool stands = CreateFrame(app);
    if (stands && kind) TakeHandedOver(app.frame, *kind);
    status = stands ? RunMessageLoop(app) : 1;
    DestroyMenus(app);
  }
  if (app.toolbar_pictures) ImageList_Destroy(app.toolbar_pictures);
  if (app.tree_pictures) ImageList_Destroy(app.tree_pictures);
  if (app.status_font) DeleteObject(app.status_font);
  if (app.thread_exit_event) CloseHandle(app.thread_exit_event);
  return status;
}

}  // namespace

}  // namespace vexa

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  const int status = vexa::RunEditor(instance);
  CoUninitialize();
  return status;
}
