// What the system's refusals are for the user. Tests run as root, so permissions are refused by numbers
// alone.
#include "platform/system_error.h"

#include <gtest/gtest.h>

#include "platform/pseudo_terminal.h"
#include "platform/serial.h"
#include "tests/support/recorder.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#endif

namespace vexa {
namespace {

std::error_code Of(std::errc error) {
  return std::make_error_code(error);
}

TEST(Reasons, NameTheObjectWhatTheSystemSaysAndTheNextStep) {
  const struct {
    Attempt attempt;
    std::errc error;
    const char* advice;
  } rows[] = {
      {Attempt::kWrite, std::errc::no_space_on_device,
       ". No space is left there: free some, or choose another disk."},
      {Attempt::kRead, std::errc::device_or_resource_busy,
       ". It is in use by another program: close it there."},
      {Attempt::kWrite, std::errc::permission_denied,
       ". The file or its folder is write-protected: lift that, or choose another place."},
      {Attempt::kRead, std::errc::permission_denied,
       ". Ask the owner of the file for permission to read it."},
      {Attempt::kKeepSettings, std::errc::no_space_on_device,
       ". No space is left there: free some, or choose another disk."},
      {Attempt::kMakeFolder, std::errc::permission_denied,
       ". TMPDIR, on Windows TMP, names the folder for temporary files."},
      {Attempt::kUsePort, std::errc::invalid_argument, ". Choose other line parameters, or another port."},
      {Attempt::kRead, std::errc::argument_out_of_domain, ""},
  };
  for (const auto& row : rows) {
    const std::error_code error = Of(row.error);
    EXPECT_EQ(Reason(row.attempt, "a.bin", error), "a.bin: " + SystemText(error) + row.advice);
  }
  EXPECT_EQ(Reason(Attempt::kRead, "a.bin", {}), "a.bin");
  EXPECT_EQ(Reason(Attempt::kMakeWindow, "a.bin", {}),
            "a.bin. Close other windows and programs, and try again.");
}

TEST(Reasons, CarryTheErrorBesideWhatWasNotDone) {
  const Outcome refused = Of(std::errc::io_error);
  EXPECT_FALSE(refused);
  EXPECT_TRUE(Outcome() && Outcome(true) && !Outcome(false));
  const Made<std::FILE*> none = Of(std::errc::io_error);
  EXPECT_FALSE(none);
  EXPECT_EQ(none.error, refused.error);
}

#if defined(_WIN32)
TEST(Reasons, OfWindowsAreWordedAndSorted) {
  const std::pair<int, Cause> rows[] = {
      {2, Cause::kMissing},   {5, Cause::kNoPermission},    {32, Cause::kInUse},
      {112, Cause::kNoSpace}, {19, Cause::kWriteProtected}, {1167, Cause::kGone},
      {87, Cause::kNotTaken}, {4, Cause::kTooMany},         {433, Cause::kMissing}};
  for (const auto& [number, cause] : rows) {
    const std::error_code error(number, std::system_category());
    EXPECT_EQ(CauseOf(error), cause) << number;
    const std::string said = SystemText(error);
    EXPECT_FALSE(said.empty() || said.ends_with('.') || said.find('\n') != said.npos) << said;
  }
  EXPECT_EQ(SystemText({77777, std::system_category()}), "error 77777");
}

TEST(Reasons, AFileThatAnotherHoldsIsInUse) {
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "held";
  PutFile(path, Bytes(1));
  const HANDLE held = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  Bytes content;
  EXPECT_EQ(CauseOf(ReadWholeFile(path, content).error), Cause::kInUse);
  EXPECT_EQ(CauseOf(WriteWholeFile(path, Bytes(2)).error), Cause::kInUse);
  CloseHandle(held);
}

TEST(Reasons, APortThatIsRefusedIsInUse) {
  EXPECT_EQ(PortRefusal("COM3", {5, std::system_category()}), "COM3 is in use");
  EXPECT_EQ(
      PortRefusal("COM3", {2, std::system_category()}),
      "COM3: " + SystemText({2, std::system_category()}) + ". Connect the device, or choose another port.");
}
#else
TEST(Reasons, OfFilesAreWhatStandsInTheWay) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder, file = folder / "file", loop = folder / "loop";
  PutFile(file, Bytes(1));
  std::filesystem::create_symlink(loop, loop);
  const std::tuple<Path, Cause, Cause> rows[] = {
      {folder, Cause::kFolder, Cause::kFolder},
      {folder / "none" / "file", Cause::kMissing, Cause::kMissing},
      {file / "in it", Cause::kNoFolder, Cause::kNoFolder},
      {folder / std::string(300, 'x'), Cause::kLongName, Cause::kLongName},
      {"/dev/full", Cause::kOther, Cause::kNoSpace}};
  for (const auto& [path, read, write] : rows) {
    Bytes content;
    if (read != Cause::kOther) {
      EXPECT_EQ(CauseOf(ReadWholeFile(path, content).error), read) << path;
    }
    EXPECT_EQ(CauseOf(WriteWholeFile(path, Bytes(1)).error), write) << path;
  }
  Bytes content;
  EXPECT_EQ(ReadWholeFile(loop, content).error.value(), ELOOP);
}

TEST(Reasons, AFileThatMayNotGrowIsTooLarge) {
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "file";
  PutFile(path, BytesOf("old"));
  const auto former = signal(SIGXFSZ, SIG_IGN);
  rlimit limit{}, small{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
  small = limit;
  small.rlim_cur = 100;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const WriteResult result = WriteWholeFile(path, Bytes(100000));
  setrlimit(RLIMIT_FSIZE, &limit);
  signal(SIGXFSZ, former);
  EXPECT_EQ(result, WriteResult::kFailed);
  EXPECT_EQ(CauseOf(result.error), Cause::kTooLarge);
  EXPECT_EQ(ReadWholeFile(path), BytesOf("old"));
}

TEST(Reasons, APortNamesWhoHoldsItAndWhoMayUseIt) {
  Recorder recorder;
  const std::string file = Utf8FromPath(recorder.context.temporary_folder / "port");
  PutFile(PathFromUtf8(file), {});
  ASSERT_EQ(chmod(file.c_str(), 0660), 0);
  const std::error_code denied = Of(std::errc::permission_denied);
  if (chown(file.c_str(), 0, 5) == 0) {  // the group "tty" of every system
    EXPECT_EQ(PortRefusal(file, denied), file + ": Permission denied. Join the group tty, and log in again.");
  }
  ASSERT_EQ(chmod(file.c_str(), 0600), 0);
  EXPECT_EQ(PortRefusal(file, denied), file +
                                           ": Permission denied. Ask the administrator for permission to "
                                           "use the port, and log in again.");
  EXPECT_EQ(PortRefusal(file, Of(std::errc::device_or_resource_busy)), file + " is in use");
  EXPECT_EQ(PortRefusal(file, Of(std::errc::inappropriate_io_control_operation)),
            file + ": Inappropriate ioctl for device. Choose a serial port.");

  std::string program;
  std::getline(std::ifstream("/proc/self/comm"), program);
  const std::string owner = program + " (" + std::to_string(getpid()) + ")";
  for (const bool locked : {true, false}) {
    auto terminal = OpenPseudoTerminal({}).value;
    if (!terminal) GTEST_SKIP() << "no pseudo-terminals on this system";
    const auto port = locked ? SystemCommApi().create_file(terminal->path) : Made<SerialDevicePtr>();
    const auto again = SystemCommApi().create_file(terminal->path);
    EXPECT_EQ(again.value == nullptr, locked);
    // One that takes no lock is found by what it has open.
    EXPECT_EQ(PortRefusal(terminal->path, locked ? again.error : Of(std::errc::device_or_resource_busy)),
              terminal->path + " is in use by " + owner);
  }
}
#endif

}  // namespace
}  // namespace vexa
