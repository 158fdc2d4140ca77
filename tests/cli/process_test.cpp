// What only shows in a process of its own: failed allocations, signals, streams that take nothing.
#include "tests/cli/cli_test.h"

#if !defined(_WIN32)

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "cli/program.h"
#include "core/out_of_memory.h"
#include "image/urt.h"
#include "import/csv.h"
#include "platform/temporary_folder.h"
#include "tests/cli/failing_files.h"
#include "tests/support/data_folder.h"
#include "tests/support/failing_memory.h"
#include "tests/support/list_maker.h"

namespace vexa {
namespace {

using testing::HasSubstr;

struct Process : CliTest {
  Process() {
    std::mt19937 random(3);
    Document document = NewDocument();
    document.sdbs[0].database = MakeRandomDatabase(random, {3, 2, 4, 8, 2, false, false});
    Save(document, "base.bin");
    Put("list.sdx", "SATCODX");
    Put("small.sdx", SdxList({{}, {.video = "0403"}}));
    Put("other.sdx", SdxList({{.video = "0405"}}));
    Put("list.dvb", "DVSO");
    for (const char* folder : {"lists", "memory"}) std::filesystem::create_directory(At(folder));
    for (const char* name : {"1", "2"})
      Put(std::string("lists/a list with a long name ") + name + ".sdx", "S");
    Put("memory/space1-00000000.bin", "old");
  }

  // Runs the command line in a child; its standard error goes to "errors", its output to `output`.
  pid_t Start(const std::string& line, int fails_at = 0, const std::string& output = "/dev/null",
              bool line_by_line = false, FailingThreads threads = FailingThreads::kThis) {
    const pid_t child = fork();
    if (child != 0) return child;
    const auto direct = [](const std::string& path, int stream) {
      const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
      dup2(file, stream);
      close(file);
    };
    direct(In("errors"), STDERR_FILENO);
    output.empty() ? static_cast<void>(close(STDOUT_FILENO)) : direct(output, STDOUT_FILENO);
    setvbuf(stdout, nullptr, line_by_line ? _IOLBF : _IOFBF, BUFSIZ);
    setenv("TMPDIR", In("tmp").c_str(), 1);
    std::vector<std::string> arguments = Words("vexa " + line);
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    if (failing_step > 0) FailFileStep(fault, failing_step, *steps);
    std::optional<FailingMemory> memory;
    if (fails_at > 0) memory.emplace(fails_at, threads);
    const int status = RunProgram(static_cast<int>(arguments.size()), pointers.data());
    _exit(fails_at > 0 && !memory->Reached() ? 100 : status);
  }
  // Runs the command line with that step of writing files gone wrong; its status, or nothing when it has not
  // so many steps.
  std::optional<int> EndWithFault(const std::string& line, FileFault what, int step) {
    fault = what;
    failing_step = step;
    *steps = 0;
    const int status = End(Start(line));
    failing_step = 0;
    return *steps < step ? std::nullopt : std::optional(status);
  }
  // Files beside `name` that a program leaves while it writes.
  bool HasScratch() {
    std::vector<Path> names;
    ListFolder(recorder.context.temporary_folder, names);
    return std::any_of(names.begin(), names.end(),
                       [](const Path& name) { return name.native().starts_with(".vexa-"); });
  }
  // Until the child answers the signal itself.
  static void AwaitWatch(pid_t child, int number) {
    for (int i = 0; i < 2000; ++i, usleep(5000)) {
      std::ifstream status("/proc/" + std::to_string(child) + "/status");
      for (std::string line; std::getline(status, line);) {
        if (line.starts_with("SigCgt:") && (std::stoull(line.substr(7), nullptr, 16) >> (number - 1) & 1))
          return;
      }
    }
  }
  // Until the loader's port is there; false, the loader ended, where the system has no pseudo-terminals.
  bool AwaitPort(pid_t loader, const char* link) {
    for (int i = 0; i < 4000; ++i, usleep(5000)) {
      if (std::filesystem::is_symlink(At(link))) return true;
      siginfo_t ended{};
      if (waitid(P_PID, static_cast<id_t>(loader), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 && ended.si_pid)
        break;
    }
    kill(loader, SIGTERM);
    return false;
  }
  int End(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  }
  std::string Errors() {
    const Bytes errors = Get("errors");
    return {errors.begin(), errors.end()};
  }
  size_t Left() {  // folders of the program in the temporary path
    std::vector<Path> names;
    ListFolder(At("tmp"), names);
    return static_cast<size_t>(std::count_if(
        names.begin(), names.end(), [](const Path& name) { return name.native().starts_with("vexa-"); }));
  }
  FileFault fault = FileFault::kFullDisk;
  int failing_step = 0;  // 0: none
  int* steps = static_cast<int*>(
      mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  void TearDown() override { munmap(steps, sizeof(int)); }
  void SetUp() override {
    ASSERT_NE(steps, MAP_FAILED);
    std::filesystem::create_directory(At("tmp"));
    Put("tmp/a file with a name that is too long to be kept without an allocation", "");
  }
};

// Commands that write the file "out"; of those that fill a folder, only what they say and leave behind is
// looked at.
const char* const kWriting[] = {
    "save @base.bin -o @out --compress-bin on",
    "sort @base.bin -o @out --satellites name",
    "set @base.bin -o @out 'satellite 1' position=3",
    "import @small.sdx -o @out",
    "import @small.sdx -o @out --stream",
    "export @base.bin -o @out --format json",
    "export @base.bin -o @out --format csv",
    "export @base.bin -o @out --format html",
    "export @base.bin -o @out",
    "merge satcodx @small.sdx @other.sdx -o @out",
    "ecf build @s.toml -o @out",
    "adb request -o @out-request",
    "adb build @base.bin -o @out-adb",
    "urt build @base.bin -o @out --type 3 --kind 5 --flag 0 --name N --start 0 --end 20000",
};

// A packed file tells the minute in which it was made, and shows by itself that it is whole.
bool IsSameOutput(const Bytes& one, const Bytes& other) {
  return one == other || (one.size() == other.size() && ReadUrt(one).findings.empty());
}

TEST_F(Process, AFullDiskAtAnyStepIsToldAndLeavesOldOutputs) {
  std::filesystem::copy_file(DataFolder() / "receivers.toml", At("s.toml"));
  for (const std::string line : kWriting) {
    SCOPED_TRACE(line);
    Put("out", "old");
    ASSERT_EQ(End(Start(line)), 0) << Errors();
    int step = 1;
    for (;; ++step) {
      Put("out", "old");
      const auto status = EndWithFault(line, FileFault::kFullDisk, step);
      if (!status) break;
      EXPECT_EQ(*status, 1) << step;
      EXPECT_THAT(Errors(), HasSubstr("error: ")) << step;
      EXPECT_EQ(Get("out"), BytesOf("old")) << step;
      EXPECT_EQ(Left(), 0u) << step;
      EXPECT_FALSE(HasScratch()) << step;
      if (HasFailure()) return;
    }
    EXPECT_GE(step, 4);
  }
}

TEST_F(Process, KilledAtAnyStepTheOldOrTheNewFileStands) {
  std::filesystem::copy_file(DataFolder() / "receivers.toml", At("s.toml"));
  for (const std::string line : kWriting) {
    SCOPED_TRACE(line);
    Put("out", "old");
    ASSERT_EQ(End(Start(line)), 0) << Errors();
    const Bytes made = Get("out");
    for (int step = 1;; ++step) {
      Put("out", "old");
      const auto status = EndWithFault(line, FileFault::kKill, step);
      if (!status) break;
      EXPECT_EQ(*status, 1000 + SIGKILL) << step;
      EXPECT_TRUE(Get("out") == BytesOf("old") || IsSameOutput(Get("out"), made)) << step;
      if (HasFailure()) return;
    }
    // The next start and the next write take what was left behind.
    EXPECT_EQ(End(Start(line)), 0) << Errors();
    EXPECT_TRUE(IsSameOutput(Get("out"), made));
    EXPECT_EQ(Left(), 0u);
    EXPECT_FALSE(HasScratch());
  }
}

TEST_F(Process, AFailedAllocationIsToldAndLeavesOldOutputsWhereverItHappens) {
  const std::string lines[] = {"info @base.bin",
                               "save @base.bin -o @out --compress-bin on",
                               "import @list.sdx -o @out --stream --work-dir @out-work",
                               "adb build @base.bin -o @out-dir",
                               "export @base.bin -o @out --format json",
                               "merge satcodx --folder @lists -o @out",
                               "sort @base.bin -o @out --satellites name",
                               "set @base.bin -o @out 'satellite 1' position=3",
                               "urt build @base.bin -o @out --type 3 --kind 5 --flag 0 --name N --start 0 "
                               "--end 20000",
                               "ports --json",
                               "loader --link @base.bin --memory @memory",
                               "info @base.bin --bogus",
                               "--version"};
  for (const std::string& line : lines) {
    int told = 0;
    const int usual = End(Start(line));
    // Every one at the start; then in steps without a common divisor with what repeats.
    for (int n = 1;; n += n < 40 ? 1 : 67) {
      Put("out", "old");
      const int status = End(Start(line, n));
      if (status == 100) break;
      const std::string errors = Errors();
      const bool out_of_memory = errors.ends_with(std::string("error: ") + kOutOfMemoryText + "\n");
      told += out_of_memory ? 1 : 0;
      const bool own_text = errors.find("malloc failed - InitConfig") != errors.npos;
      // A piece that can do without the memory goes on; wrong usage is told all the same.
      if (out_of_memory || own_text) {
        EXPECT_EQ(status, 1) << line << " " << n;
      } else {
        EXPECT_THAT(status, testing::AnyOf(0, usual)) << line << " " << n << errors;
      }
      if (status == 1) {
        EXPECT_EQ(Get("out"), BytesOf("old")) << line << " " << n;
      }
      EXPECT_EQ(Left(), 0u) << line << " " << n;
      if (HasFailure()) return;
    }
    EXPECT_GT(told, 30) << line;
  }
}

// Folders are made for the outputs, shortly before the end.
TEST_F(Process, AFailedAllocationLeavesNoFolderThatWasMadeForOutputs) {
  const std::string line = "adb build @base.bin -o @made/for/it";
  const auto run = [&](int n) {
    std::filesystem::remove_all(At("made"));
    return End(Start(line, n));
  };
  int reached = 1, beyond = 1 << 20;  // allocations that there are, and are not
  while (beyond - reached > 1) {
    const int middle = (reached + beyond) / 2;
    (run(middle) == 100 ? beyond : reached) = middle;
  }
  for (int n = reached; n > std::max(0, reached - 60); --n) {
    const int status = run(n);
    EXPECT_THAT(status, testing::AnyOf(0, 1)) << n;
    EXPECT_EQ(Exists("made"), status == 0) << n << Errors();
  }
}

// Two commands side by side share a log; the receiver of one of them is killed half way.
TEST_F(Process, ReceiversAtTwoPortsEndEachForItself) {
  const pid_t loaders[] = {Start("loader --link @one"),
                           Start("loader --link @two --baud 300000 --log @heard")};
  const bool ports[] = {AwaitPort(loaders[0], "one"), AwaitPort(loaders[1], "two")};
  if (!ports[0] || !ports[1]) {
    for (const pid_t loader : loaders) kill(loader, SIGTERM);
    for (const pid_t loader : loaders) End(loader);
    GTEST_SKIP() << "no pseudo-terminals on this system";
  }
  const auto each = [&](const std::string& port, const std::string& lines) {
    Put("lines", lines);
    const int before = dup(STDIN_FILENO), input = open(In("lines").c_str(), O_RDONLY);
    dup2(input, STDIN_FILENO);
    const pid_t child =
        Start("upload adb @base.bin --each --verify --timeout 20 --log @log.csv --port @" + port);
    dup2(before, STDIN_FILENO);
    for (const int file : {before, input}) close(file);
    return child;
  };
  const pid_t two = each("two", "B-1\n");
  std::error_code error;
  for (int i = 0; i < 4000 && std::filesystem::file_size(At("heard"), error) + 1 < 100000; ++i) usleep(5000);
  const pid_t one = each("one", "A-1\nA-2\n");
  kill(loaders[1], SIGKILL);
  EXPECT_EQ(End(two), 1);
  EXPECT_EQ(End(one), 0) << Errors();
  kill(loaders[0], SIGTERM);
  for (const pid_t loader : loaders) End(loader);
  const Bytes log = Get("log.csv");
  std::vector<std::string> rows;
  for (const CsvRow& row : ParseCsv(std::string(log.begin(), log.end())))
    rows.push_back(row.cells[1] + " " + row.cells[8] + " " + row.cells[9]);
  std::sort(rows.begin(), rows.end());
  EXPECT_EQ(rows,
            (std::vector<std::string>{"A-1 yes ok", "A-2 yes ok", "B-1  failed", "serial verified result"}));
}

// The job and the reader of a port run on threads of their own.
TEST_F(Process, AFailedAllocationInATransfersThreadIsToldAndLeavesNothingBehind) {
  const pid_t loader = Start("loader --link @far");
  if (!AwaitPort(loader, "far")) {
    End(loader);
    GTEST_SKIP() << "no pseudo-terminals on this system";
  }
  EXPECT_EQ(End(Start("upload adb @base.bin --port @far --timeout 20")), 0) << Errors();
  for (const std::string line :
       {"upload adb @base.bin --port @far --timeout 20", "download -o @out --port @far --timeout 20"}) {
    int told = 0;
    for (int n = 1; !HasFailure(); n = n < 6 ? n + 1 : n * 2) {
      Put("out", "old");
      const int status = End(Start(line, n, "/dev/null", false, FailingThreads::kOthers));
      if (status == 100) break;
      EXPECT_EQ(status, 1) << line << n;
      // The other threads may say something still.
      EXPECT_THAT(Errors(), HasSubstr(std::string("error: ") + kOutOfMemoryText + "\n")) << line << n;
      EXPECT_EQ(Left(), 0u) << line << n;
      EXPECT_EQ(Get("out"), BytesOf("old")) << line << n;
      ++told;
    }
    EXPECT_GT(told, 6) << line;
  }
  kill(loader, SIGTERM);
  End(loader);
}

TEST_F(Process, SignalsEndEveryCommandWithNothingLeftBehind) {
  ASSERT_EQ(mkfifo(At("pipe").c_str(), 0600), 0);
  // A reading command waits for the pipe's writer, a writing one for its reader.
  const std::pair<std::string, std::string> rows[] = {{"info @pipe", "vexa info"},
                                                      {"import @pipe -o @out", "vexa import"},
                                                      {"adb build @pipe -o @out", "vexa adb build"},
                                                      {"save @base.bin -o @pipe", "vexa save"}};
  for (const auto& [line, name] : rows) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
      signal(number, SIG_DFL);
      const pid_t child = Start(line);
      AwaitWatch(child, number);
      kill(child, number);
      EXPECT_EQ(End(child), 1) << line;
      EXPECT_EQ(Errors(), "error: " + name + " was interrupted.\n");
      EXPECT_EQ(Left(), 0u) << line;
      EXPECT_FALSE(Exists("out")) << line;
    }
  }
}

TEST_F(Process, ASignalThatWasIgnoredStaysIgnored) {
  ASSERT_EQ(mkfifo(At("pipe").c_str(), 0600), 0);
  signal(SIGHUP, SIG_IGN);
  const pid_t child = Start("check @pipe");
  signal(SIGHUP, SIG_DFL);
  AwaitWatch(child, SIGTERM);
  kill(child, SIGHUP);
  usleep(60000);
  int pipe = -1;
  for (int i = 0; i < 200 && pipe < 0; ++i) {
    pipe = open(At("pipe").c_str(), O_WRONLY | O_NONBLOCK);
    if (pipe < 0) usleep(20000);  // it has not come so far
  }
  EXPECT_GE(pipe, 0) << "it still waits";
  close(pipe);
  EXPECT_EQ(End(child), 1);
  EXPECT_EQ(Errors().find("interrupted"), std::string::npos);
}

TEST_F(Process, ResultsThatCannotBeWrittenAreAFailure) {
  const std::pair<std::string, std::string> rows[] = {{"/dev/full", "No space left on device"},
                                                      {"", "Bad file descriptor"}};
  for (const auto& [output, reason] : rows) {
    for (const std::string line :
         {"info @base.bin", "ecf show @no.ecf", "--help", "--version", "export --help"}) {
      const bool refused = line.starts_with("ecf");
      for (const bool line_by_line : {false, true}) {
        EXPECT_EQ(End(Start(line, 0, output, line_by_line)), 1) << line;
        EXPECT_EQ(Errors().find(reason) == std::string::npos, refused) << line << Errors();
        EXPECT_THAT(Errors(), testing::StartsWith("error: "));
      }
    }
  }
}

TEST_F(Process, AFileThatLeadsToAStreamWhichTakesNothingIsAFailure) {
  const std::pair<std::string, std::string> rows[] = {{"/dev/full", "No space left on device"},
                                                      {"", "No such device or address"}};
  for (const auto& [output, reason] : rows) {
    for (const std::string line :
         {"export @base.bin --format json -o /dev/stdout", "save @base.bin -o /proc/self/fd/1"}) {
      EXPECT_EQ(End(Start(line, 0, output)), 1) << line;
      EXPECT_THAT(Errors(), HasSubstr(reason)) << line;
    }
  }
}

TEST_F(Process, ALoaderTellsWhatItCouldNotKeep) {
  const pid_t child = Start("loader --link @far --memory @base.bin/x --log /dev/full");
  AwaitPort(child, "far");
  usleep(20000);
  kill(child, SIGTERM);
  EXPECT_EQ(End(child), 1);
  EXPECT_THAT(Errors(), HasSubstr("error: Could not write the memory to \"" + In("base.bin/x") + "\".\n"));
  EXPECT_THAT(Errors(), HasSubstr("error: vexa loader was interrupted.\n"));
  EXPECT_FALSE(std::filesystem::is_symlink(At("far")));
}

TEST_F(Process, WithoutATemporaryFolderACommandThatNeedsOneIsRefused) {
  std::filesystem::remove_all(At("tmp"));
  Put("~001adb.bin", "the user's own");
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(recorder.context.temporary_folder);
  for (const std::string line : {"adb build @base.bin -o @out", "upload adb @base.bin --port x",
                                 "upload sdb @base.bin --port x", "download -o @out --port x"}) {
    EXPECT_EQ(End(Start(line)), 1);
    EXPECT_THAT(Errors(),
                testing::AllOf(
                    testing::StartsWith("error: Failed to create new directory.\ninfo: " + In("tmp") + ": "),
                    HasSubstr(". TMPDIR, on Windows TMP, names the folder")))
        << line;
  }
  EXPECT_EQ(End(Start("info @base.bin")), 0);
  std::filesystem::current_path(before);
  EXPECT_EQ(Get("~001adb.bin"), BytesOf("the user's own"));
  EXPECT_FALSE(Exists("out"));
}

// A signal, and a kill, while the folder is being removed. As many links to one file make that last; their
// number shows how far it is.
TEST_F(Process, NoSignalAtACommandsEndLeavesItsFolder) {
  ASSERT_EQ(mkfifo(At("pipe").c_str(), 0600), 0);
  Put("linked", "x");
  // Of several kills one at least comes behind the place where the owner's file would be in a folder's order.
  for (const int number : {SIGTERM, SIGKILL, SIGKILL, SIGKILL}) {
    const pid_t child = Start("adb build @pipe -o @out");
    for (int i = 0; i < 2000 && Left() == 0; ++i) usleep(5000);
    std::vector<Path> names;
    ListFolder(At("tmp"), names);
    Path folder;
    for (const Path& name : names) folder = name.native().starts_with("vexa-") ? At("tmp") / name : folder;
    for (int i = 0; i < 2000 && !std::filesystem::exists(folder / "vexa-owner"); ++i) usleep(5000);
    for (int i = 0; i < 8000; ++i) {
      std::filesystem::create_hard_link(At("linked"), folder / std::to_string(i));
      if (i != 4000) continue;  // where a folder is listed by age, it stands in the middle
      std::filesystem::rename(folder / "vexa-owner", folder / "x");
      std::filesystem::rename(folder / "x", folder / "vexa-owner");
    }
    std::ofstream(At("pipe")) << std::ifstream(At("base.bin")).rdbuf();
    while (std::filesystem::hard_link_count(At("linked")) > (number == SIGTERM ? 8000 : 2000)) usleep(50);
    kill(child, number);
    EXPECT_EQ(End(child), number == SIGTERM ? 0 : 1000 + SIGKILL) << Errors();
    EXPECT_EQ(Left(), number == SIGTERM ? 0u : 1u);
    EXPECT_EQ(End(Start("adb build @base.bin -o @out")), 0) << Errors();
    EXPECT_EQ(Left(), 0u);
  }
}

TEST_F(Process, TheFolderOfAKilledProgramGoesWithTheNextStart) {
  ASSERT_EQ(mkfifo(At("pipe").c_str(), 0600), 0);
  const pid_t child = Start("adb build @pipe -o @out");
  for (int i = 0; i < 200 && Left() == 0; ++i) usleep(5000);
  usleep(20000);
  kill(child, SIGKILL);
  EXPECT_EQ(End(child), 1000 + SIGKILL);
  EXPECT_EQ(Left(), 1u);
  EXPECT_EQ(End(Start("adb build @base.bin -o @out")), 0) << Errors();
  EXPECT_EQ(Left(), 0u);
}

}  // namespace
}  // namespace vexa

#endif
