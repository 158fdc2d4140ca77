// Time from starting the editor to a shown window that answers, with the largest database beside an empty
// one. Usage: start_bench EDITOR; on Linux: xvfb-run -a wine start_bench.exe VexaEditor.exe
#include <windows.h>
// After windows.h.
#include <shellapi.h>

#include "bench/measure.h"
#include "ui/controls/application.h"

namespace vexa {
namespace {

bool Answers(HWND window) {
  DWORD_PTR result = 0;
  return IsWindowVisible(window) &&
         SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_BLOCK, 1000, &result) != 0;
}

// The frame stands, shows a database and answers.
bool Shown() {
  HWND frame = FindWindowW(kFrameClass, nullptr);
  if (!frame || !IsWindowVisible(frame)) return false;
  HWND child =
      FindWindowExW(FindWindowExW(frame, nullptr, L"MDIClient", nullptr), nullptr, kEditorClass, nullptr);
  return child && Answers(child);
}

void EndEditor(PROCESS_INFORMATION& process) {
  PostMessageW(FindWindowW(kFrameClass, nullptr), WM_CLOSE, 0, 0);
  Require(WaitForSingleObject(process.hProcess, 20000) == WAIT_OBJECT_0, "closing the editor");
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
}

double StartTime(const Path& editor, const Path& database) {
  PROCESS_INFORMATION process{};
  const auto end = [&] {
    if (process.hProcess) EndEditor(process);
    process = {};
  };
  const double best = BestMilliseconds(
      9,
      [&] {
        std::wstring line = L"\"" + editor.native() + L"\" --test-mode \"" + database.native() + L"\"";
        STARTUPINFOW start{};
        start.cb = sizeof start;
        Require(CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                               &process),
                "starting the editor");
        const ULONGLONG limit = GetTickCount64() + 60000;
        while (!Shown()) {
          Require(GetTickCount64() < limit, "showing the window");
          Sleep(1);
        }
      },
      end);
  end();
  return best;
}

int Run(int argc, wchar_t** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: start_bench EDITOR\n");
    return 2;
  }
  const auto folder = MakeTestFolder("vexa-start-bench");
  Require(folder.has_value(), "making a folder");
  const Context context;
  const Path largest = *folder / "largest.bin", empty = *folder / "empty.bin";
  SaveLargestDatabase(context, largest);
  Document document = NewDocument();
  document.sdbs[0].database->lnb_count = 1;
  AddTestSatellite(*document.sdbs[0].database, "Satellite");
  Require(SaveBin(context, document, empty).has_value(), "making the empty database");
  const double base = StartTime(argv[1], empty);
  const double full = StartTime(argv[1], largest);
  PrintRow({"start to a shown window, largest database", {full}, "an empty one", {base}});
  RemoveFolder(*folder);
  return 0;
}

}  // namespace
}  // namespace vexa

int main() {
  int count = 0;
  wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  const int status = vexa::Run(count, arguments);
  LocalFree(arguments);
  return status;
}
