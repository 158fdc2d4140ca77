// A program of Windows that is killed at a step of writing: every target is the old file or the new one.
#if defined(_WIN32)

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <cstdlib>

#include "platform/files.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

constexpr wchar_t kStep[] = L"VEXA_TEST_KILLED_AT", kFolder[] = L"VEXA_TEST_KILLED_IN";
constexpr DWORD kKilled = 9;

std::wstring Variable(const wchar_t* name) {
  std::array<wchar_t, 600> text{};
  return {text.data(), GetEnvironmentVariableW(name, text.data(), text.size())};
}

std::vector<FileContent> Contents(const Path& folder) {
  return {{folder / L"caf\u00E9.bin", Bytes(100'000, 'a')}, {folder / L"two.urt", Bytes(70'000, 'b')}};
}

// The system's files, where the program is killed instead of the step of that number, a write in its middle.
FileOperations KilledAt(int last) {
  const auto step = [last, count = std::make_shared<int>(0)](const std::function<void()>& before) {
    if (++*count != last) return;
    before();
    TerminateProcess(GetCurrentProcess(), kKilled);
  };
  const FileOperations& system = SystemFiles();
  FileOperations files = system;
  files.create = [=, &system](const Path& path) {
    step([] {});
    return system.create(path);
  };
  files.write = [=, &system](std::FILE* file, std::span<const uint8_t> bytes) {
    step([&] {
      system.write(file, bytes.first(bytes.size() / 2));
      std::fflush(file);
    });
    return system.write(file, bytes);
  };
  files.finish = [=, &system](std::FILE* file) {
    step([] {});
    return system.finish(file);
  };
  files.replace = [=, &system](const Path& from, const Path& to) {
    step([] {});
    return system.replace(from, to);
  };
  return files;
}

// Starts this test once more as the program that is killed; how it ended.
DWORD RunKilledAt(int step, const Path& folder) {
  SetEnvironmentVariableW(kStep, std::to_wstring(step).c_str());
  SetEnvironmentVariableW(kFolder, folder.c_str());
  std::array<wchar_t, 600> program{};
  GetModuleFileNameW(nullptr, program.data(), program.size());
  std::wstring line = L"tests --gtest_brief=1 --gtest_filter=KilledWrite.*";
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  DWORD status = 1;
  if (CreateProcessW(program.data(), line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                     &process)) {
    WaitForSingleObject(process.hProcess, 60'000);
    GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  }
  SetEnvironmentVariableW(kStep, nullptr);
  return status;
}

TEST(KilledWrite, LeavesTheOldOrTheNewFiles) {
  size_t refused = 0;
  if (const std::wstring step = Variable(kStep); !step.empty()) {
    EXPECT_EQ(WriteWholeFiles(Contents(Variable(kFolder)), refused, KilledAt(std::stoi(step))),
              WriteResult::kDone);
    return;
  }
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder / "targets";
  std::filesystem::create_directory(folder);
  const std::vector<FileContent> contents = Contents(folder);
  const Bytes old(5000, 'o');
  int step = 1;
  for (DWORD status = kKilled; status == kKilled; ++step) {
    SCOPED_TRACE(step);
    for (const FileContent& content : contents) PutFile(content.path, old);
    status = RunKilledAt(step, folder);
    ASSERT_TRUE(status == kKilled || status == 0) << status;
    for (const FileContent& content : contents) {
      const Bytes now = ReadWholeFile(content.path).value_or(Bytes());
      EXPECT_TRUE(now == content.content || (status == kKilled && now == old)) << now.size() << " bytes";
    }
  }
  EXPECT_GT(step, 8) << "two files are created, written, flushed and renamed";
  // The next write takes what the killed ones left.
  EXPECT_EQ(WriteWholeFiles(contents, refused), WriteResult::kDone);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 2);
}

}  // namespace
}  // namespace vexa

#endif
