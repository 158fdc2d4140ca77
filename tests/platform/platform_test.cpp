#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <thread>

#include "platform/clock.h"
#include "platform/file_identity.h"
#include "platform/files.h"
#include "platform/interrupt.h"
#include "platform/settings_store.h"
#include "platform/temporary_folder.h"
#include "platform/text.h"
#include "tests/support/failing_memory.h"
#include "tests/support/recorder.h"

#if !defined(_WIN32)
namespace {
int entries_left = 0;  // until a walk through a folder breaks off; 0: none does
int sync_error = 0;    // of every fsync; 0: they do what they should
int link_error = 0;    // of every link, likewise
}  // namespace

// The library's, but for a disk that fails.
extern "C" int fsync(int file) {
  static const auto own = reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "fsync"));
  if (sync_error == 0) return own(file);
  errno = sync_error;
  return -1;
}
// The library's, but for a file system that knows no second names.
extern "C" int link(const char* file, const char* name) {
  static const auto own = reinterpret_cast<int (*)(const char*, const char*)>(dlsym(RTLD_NEXT, "link"));
  if (link_error == 0) return own(file, name);
  errno = link_error;
  return -1;
}
extern "C" dirent* readdir(DIR* folder) {
  static const auto own = reinterpret_cast<dirent* (*)(DIR*)>(dlsym(RTLD_NEXT, "readdir"));
  if (entries_left == 0 || --entries_left > 0) return own(folder);
  errno = EIO;
  return nullptr;
}
#endif

namespace vexa {
namespace {

int FilesIn(const Path& folder) {
  int files = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) ++files;
  return files;
}

TEST(Files, EveryFailingStepLeavesTheOldFileAndNoScratch) {
  Recorder recorder;
  const Path target = recorder.context.temporary_folder / PathFromUtf8("na\xC3\xAFve \xE2\x82\xAC.bin");
  const Bytes before = BytesOf("before"), after(100000, 7);
  PutFile(target, before);
  for (int step = 1;; ++step) {
    recorder.FailStep(step);
    const WriteResult result = WriteWholeFile(target, after, recorder.files);
    if (result == WriteResult::kDone) {
      EXPECT_EQ(step, 5);  // create, write, finish, replace
      break;
    }
    EXPECT_EQ(result, step == 1 ? WriteResult::kCannotCreate : WriteResult::kFailed);
    EXPECT_EQ(CauseOf(result.error), Cause::kNoSpace) << step;
    EXPECT_EQ(ReadWholeFile(target), before) << step;
  }
  EXPECT_EQ(ReadWholeFile(target), after);
  EXPECT_EQ(FilesIn(recorder.context.temporary_folder), 1);
}

TEST(Files, RefusesFoldersMissingFilesAndWhatIsTooLarge) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder;
  EXPECT_FALSE(ReadWholeFile(folder));
  EXPECT_FALSE(ReadWholeFile(folder / "none"));
  EXPECT_EQ(WriteWholeFile(folder, Bytes(1)), WriteResult::kCannotCreate);
  EXPECT_EQ(WriteWholeFile(folder / "none" / "file", Bytes(1)), WriteResult::kCannotCreate);
  PutFile(folder / "file", Bytes(10));
  EXPECT_FALSE(ReadWholeFile(folder / "file", 9));
  EXPECT_TRUE(ReadWholeFile(folder / "file", 10));
  const Path broken = "/proc/self/mem";  // can be opened, and nothing is mapped at its start
  const struct {
    Path path;
    uint64_t limit;
    ReadResult result;
  } rows[] = {{folder, 10, ReadResult::kCannotOpen},
              {folder / "none", 10, ReadResult::kCannotOpen},
              {folder / "file", 9, ReadResult::kFailed},
              {broken, 10, std::filesystem::exists(broken) ? ReadResult::kFailed : ReadResult::kCannotOpen},
              {folder / "file", 10, ReadResult::kDone}};
  for (const auto& row : rows) {
    Bytes content = {1};
    EXPECT_EQ(ReadWholeFile(row.path, content, row.limit), row.result) << row.path;
    EXPECT_EQ(content.size(), row.result == ReadResult::kDone ? 10u : 0u) << row.path;
  }
}

TEST(Files, OneFileHasManyNames) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder, file = folder / "one.bin",
             other = folder / "two.bin";
  for (const Path& path : {file, other}) PutFile(path, BytesOf("same"));
  std::error_code error;
  std::filesystem::create_hard_link(file, folder / "link.bin", error);
  EXPECT_TRUE(SameFile(file, folder / "." / "one.bin"));
  const Path relative = std::filesystem::relative(file);  // empty from another drive
  EXPECT_TRUE(relative.empty() || SameFile(file, relative));
  if (!error) {
    EXPECT_TRUE(SameFile(file, folder / "link.bin"));
  }
  EXPECT_FALSE(SameFile(file, other));
  EXPECT_TRUE(SameFile(folder / "none", folder / "x" / ".." / "none"));
  EXPECT_FALSE(SameFile(folder / "none", folder / "nobody"));
#if defined(_WIN32)
  EXPECT_TRUE(SameFile(file, folder / "ONE.bin"));
  EXPECT_TRUE(SameFile(folder / "None", folder / "nONE"));
#else
  EXPECT_FALSE(SameFile(folder / "None", folder / "nONE"));
#endif
}

TEST(Files, AWriteShowsInTheState) {
  Recorder recorder;
  const Path file = recorder.context.temporary_folder / "one.bin";
  EXPECT_FALSE(StateOf(file));
  PutFile(file, BytesOf("1234"));
  const auto before = StateOf(file);
  ASSERT_TRUE(before);
  EXPECT_EQ(StateOf(file), before);
  PutFile(file, BytesOf("12345"));
  EXPECT_NE(StateOf(file), before);
  PutFile(file, BytesOf("4321"));
  std::filesystem::last_write_time(file, before->written + std::chrono::seconds(1));
  EXPECT_NE(StateOf(file), before);
  std::filesystem::last_write_time(file, before->written);
  EXPECT_EQ(StateOf(file), before);
}

TEST(Files, AReadOnlyFileIsKept) {
  Recorder recorder;
  const Path file = recorder.context.temporary_folder / "kept";
  PutFile(file, BytesOf("old"));
  constexpr auto kWrite = std::filesystem::perms::owner_write | std::filesystem::perms::group_write |
                          std::filesystem::perms::others_write;
  std::filesystem::permissions(file, kWrite, std::filesystem::perm_options::remove);
  EXPECT_EQ(WriteWholeFile(file, BytesOf("new")), WriteResult::kCannotCreate);
  EXPECT_EQ(ReadWholeFile(file), BytesOf("old"));
  std::filesystem::permissions(file, kWrite, std::filesystem::perm_options::add);
}

TEST(Files, NamesOfTheLargestLengthAndFilesBesideThemStayWhole) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder;
  const Path target = folder / std::string(255 - 4, 'n').append(".bin");
  for (int i = 0; i < 40; ++i) PutFile(folder / ("a.bin.~" + std::to_string(i) + "~"), BytesOf("user's own"));
  for (const char* content : {"one", "two"}) {
    EXPECT_EQ(WriteWholeFile(target, BytesOf(content)), WriteResult::kDone);
    EXPECT_EQ(WriteWholeFile(folder / "a.bin", BytesOf(content)), WriteResult::kDone);
    EXPECT_EQ(ReadWholeFile(target), BytesOf(content));
  }
  EXPECT_EQ(FilesIn(folder), 42);
}

TEST(Files, SeveralFilesAppearAllOrNone) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder;
  const Path old = folder / "old", added = folder / "added", last = folder / "last";
  const std::vector<FileContent> contents = {
      {old, BytesOf("new")}, {added, BytesOf("added")}, {last, BytesOf("last")}};
  size_t refused = 0;
  for (int step = 1;; ++step) {
    PutFile(old, BytesOf("before"));
    PutFile(last, BytesOf("before"));
    recorder.FailStep(step);
    const WriteResult result = WriteWholeFiles(contents, refused, recorder.files);
    if (recorder.steps < step) {
      EXPECT_EQ(result, WriteResult::kDone);
      EXPECT_EQ(step, 3 * 4 + 1);  // create, write, finish, replace
      break;
    }
    EXPECT_NE(result, WriteResult::kDone);
    EXPECT_EQ(refused, step <= 9 ? (step - 1) / 3 : step - 10) << step;
    EXPECT_EQ(ReadWholeFile(old), BytesOf("before")) << step;
    EXPECT_EQ(ReadWholeFile(last), BytesOf("before")) << step;
    EXPECT_EQ(FilesIn(folder), 2) << step;
  }
  EXPECT_EQ(ReadWholeFile(old), BytesOf("new"));
  EXPECT_EQ(ReadWholeFile(added), BytesOf("added"));
  EXPECT_EQ(ReadWholeFile(last), BytesOf("last"));
  EXPECT_EQ(FilesIn(folder), 3);
}

TEST(Files, SeveralFilesComeBackWhenMemoryRunsOutBetweenTheRenames) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder;
  std::vector<FileContent> contents;
  for (const char* name : {"a", "b", "c"}) contents.push_back({folder / name, BytesOf("new")});
  for (const int fails : {1, 2, 3}) {
    for (const char* name : {"a", "c"}) PutFile(folder / name, BytesOf("before"));
    int steps = 0;
    recorder.files.replace = [&](const Path& from, const Path& to) {
      return ++steps == fails ? throw std::bad_alloc() : SystemFiles().replace(from, to);
    };
    size_t refused = 0;
    EXPECT_THROW(WriteWholeFiles(contents, refused, recorder.files), std::bad_alloc);
    for (const char* name : {"a", "c"}) EXPECT_EQ(ReadWholeFile(folder / name), BytesOf("before")) << fails;
    EXPECT_EQ(FilesIn(folder), 2) << fails;
  }
}

TEST(Folders, AreListedWholeOrNotAtAll) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder;
  const std::vector<Path> expected = {".hidden", "inner", PathFromUtf8("na\xC3\xAFve \xE2\x82\xAC.bin")};
  std::vector<Path> names = {"old"};
  EXPECT_TRUE(ListFolder(folder, names));
  EXPECT_TRUE(names.empty());
  PutFile(folder / expected[0], {});
  std::filesystem::create_directory(folder / expected[1]);
  PutFile(folder / expected[2], {});
  EXPECT_TRUE(ListFolder(folder, names));
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, expected);
  const std::pair<Path, Cause> refused[] = {{folder / "none", Cause::kMissing},
                                            {Path(), Cause::kMissing},
                                            {folder / expected[0], Cause::kNoFolder}};
  for (const auto& [path, cause] : refused) {
    names = expected;
    EXPECT_EQ(CauseOf(ListFolder(path, names).error), cause) << path;
    EXPECT_TRUE(names.empty());
  }
#if !defined(_WIN32)
  entries_left = 4;
  EXPECT_EQ(CauseOf(ListFolder(folder, names).error), Cause::kFault);
  EXPECT_TRUE(names.empty());
#endif
}

TEST(Folders, AreRemovedWithAllThatIsInThemButNotWithWhatLinksLeadTo) {
  Recorder recorder;
  const Path outside = recorder.context.temporary_folder / "outside", folder = outside.parent_path() / "x";
  std::error_code error;
  std::filesystem::create_directory(outside);
  PutFile(outside / "kept", {});
  std::filesystem::create_directories(folder / "a" / "b");
  PutFile(folder / "a" / "b" / "file", {});
  std::filesystem::create_directory_symlink(outside, folder / "link", error);
  RemoveFolder(folder);
  RemoveFolder({});
  EXPECT_FALSE(std::filesystem::exists(folder));
  EXPECT_TRUE(std::filesystem::exists(outside / "kept"));
}

TEST(TemporaryFolders, ThoseOfProcessesThatAreGoneAreRemoved) {
  Recorder recorder;
  const std::string family = Utf8FromPath(recorder.context.temporary_folder.filename()) + "-";
  std::string why;
  const Path parent = recorder.context.temporary_folder.parent_path();
  auto mine = TemporaryFolder::Make(family + "mine", why),
       again = TemporaryFolder::Make(family + "mine", why);
  ASSERT_TRUE(mine && again) << why;
  EXPECT_EQ(mine->path(), parent / (family + "mine"));
  EXPECT_EQ(again->path(), parent / (family + "mine-1"));
  const Path dead = parent / (family + "dead"), other = parent / (family + "other");
  for (const Path& folder : {dead, other}) {
    std::filesystem::create_directories(folder / "inner");
    PutFile(folder / "inner" / "scratch", BytesOf("x"));
  }
  PutFile(dead / "vexa-owner", {});  // as a killed program leaves it: not locked
  RemoveAbandonedFolders(family);
  EXPECT_FALSE(std::filesystem::exists(dead));
  EXPECT_TRUE(std::filesystem::exists(other / "inner" / "scratch")) << "nobody's, as far as can be told";
  EXPECT_TRUE(std::filesystem::exists(mine->path()));
  EXPECT_TRUE(std::filesystem::exists(again->path()));
  const Path path = mine->path();
  PutFile(path / "scratch", BytesOf("x"));
  mine.reset();
  EXPECT_FALSE(std::filesystem::exists(path));
  RemoveFolder(other);
}

TEST(Files, TellsWhyAFileCannotBeUsed) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder, file = folder / "file";
  PutFile(file, BytesOf("x"));
  EXPECT_FALSE(WhyUnreadable(file));
  EXPECT_FALSE(WhyNotWritable(file));
  EXPECT_FALSE(WhyNotWritable(folder / "new"));
  // What reading and writing answer is what they would answer.
  const std::pair<Path, Cause> rows[] = {{folder, Cause::kFolder},
                                         {folder / "none" / "file", Cause::kMissing}};
  for (const auto& [path, cause] : rows) {
    Bytes content;
    const ReadResult read = ReadWholeFile(path, content);
    const WriteResult written = WriteWholeFile(path, content);
    EXPECT_EQ(read, ReadResult::kCannotOpen) << path;
    EXPECT_EQ(written, WriteResult::kCannotCreate) << path;
    for (const std::error_code& why : {read.error, written.error, WhyUnreadable(path), WhyNotWritable(path)})
      EXPECT_EQ(CauseOf(why), cause) << path << why;
  }
  EXPECT_EQ(FilesIn(folder), 1);
}

TEST(Files, AbandonedScratchFilesOfOtherSystemsGoAfterADay) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder;
  using std::chrono::hours;
  const struct {
    const char* name;
    hours age;
    bool stays;
  } rows[] = {{".vexa-1a-000000000000002b-0000000c.tmp", hours(25), false},
              {".vexa-1a-000000000000002c-0000000c.tmp", hours(23), true},
              {".vexa-1a-000000000000002b-0000000c.old", hours(25), false},
              {".vexa-1a-000000000000002c-0000000c.old", hours(99), true},   // its owner's is younger
              {".vexa-1a-000000000000002d-0000000c.old", hours(1), false},   // without an owner's
              {".vexa-1a-000000000000002d-0000000c.kept", hours(99), true},  // perhaps the only one
              {".vexa-2025-11-20.tmp", hours(99), true},
              {".vexa-1a-2b.tmp", hours(99), true},
              {".vexa-1a-2b-0000000c.tmp", hours(99), true},
              {".vexa-1a-00000000000000002b-0000000c.tmp", hours(99), true},
              {".vexa-1a-000000000000002b-c.tmp", hours(99), true},
              {".vexa-01a-000000000000002b-0000000c.tmp", hours(99), true},
              {".vexa-1A-000000000000002f-0000000c.tmp", hours(99), true},
              {".vexa-1a-000000000000002b-0000000c-4.tmp", hours(99), true},
              {".vexa-1a-000000000000002b-0000000c.bin", hours(99), true},
              {".vexa-.tmp", hours(99), true},
              {"vexa-1a-000000000000002b-0000000c.tmp", hours(99), true}};
  for (const auto& row : rows) {
    PutFile(folder / row.name, BytesOf("x"));
    std::filesystem::last_write_time(folder / row.name,
                                     std::filesystem::file_time_type::clock::now() - row.age);
  }
  const Path inner = folder / ".vexa-1a-000000000000002e-0000000c.tmp";
  std::filesystem::create_directory(inner);
  EXPECT_EQ(WriteWholeFile(folder / "target", BytesOf("new")), WriteResult::kDone);
  for (const auto& row : rows) EXPECT_EQ(std::filesystem::exists(folder / row.name), row.stays) << row.name;
  EXPECT_TRUE(std::filesystem::exists(inner));
}

#if !defined(_WIN32)
TEST(Files, WhatIsOpenGoesOnWhereItStands) {
  Recorder recorder;
  const Path file = recorder.context.temporary_folder / "notes";
  PutFile(file, BytesOf("notes "));
  const int open_file = open(file.c_str(), O_WRONLY | O_APPEND);
  ASSERT_GE(open_file, 0);
  for (const char* folder : {"/dev/fd/", "/proc/self/fd/"})
    EXPECT_EQ(WriteWholeFile(folder + std::to_string(open_file), BytesOf("more ")), WriteResult::kDone);
  close(open_file);
  EXPECT_EQ(ReadWholeFile(file), BytesOf("notes more more "));
}

TEST(Files, TheNextWriteRemovesWhatAKilledOneLeft) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder;
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t writer = fork();
  if (writer == 0) {
    WriteWholeFileBy(folder / "target", [&](const PieceWriter& write) {
      write(BytesOf("half"));
      static_cast<void>(!::write(ready[1], "x", 1));
      return pause() == 0;
    });
    _exit(0);
  }
  char byte = 0;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  EXPECT_EQ(WriteWholeFile(folder / "other", BytesOf("new")), WriteResult::kDone);
  EXPECT_EQ(FilesIn(folder), 2) << "that of a writer who lives stays";
  kill(writer, SIGKILL);
  waitpid(writer, nullptr, 0);
  EXPECT_EQ(FilesIn(folder), 2);
  EXPECT_EQ(WriteWholeFile(folder / "other", BytesOf("newer")), WriteResult::kDone);
  EXPECT_EQ(FilesIn(folder), 1);
  EXPECT_FALSE(std::filesystem::exists(folder / "target"));
  for (const int end : ready) close(end);
}

// Of two files at each renaming, with and without second names: no content is lost, and no name where there
// are such. What is left of it goes with the next write, but for what may be the only one.
TEST(Files, AKillBetweenTheRenamingsLosesNothing) {
  Recorder recorder;
  for (const int refused : {0, EPERM}) {
    for (const int killed_at : {1, 2}) {
      const Path folder = recorder.context.temporary_folder / std::to_string(refused * 10 + killed_at);
      std::filesystem::create_directory(folder);
      for (const char* name : {"a", "b"}) PutFile(folder / name, BytesOf("before"));
      const pid_t writer = fork();
      if (writer == 0) {
        link_error = refused;
        int steps = 0;
        recorder.files.replace = [&](const Path& from, const Path& to) {
          if (++steps == killed_at) raise(SIGKILL);
          return SystemFiles().replace(from, to);
        };
        const FileContent contents[] = {{folder / "a", BytesOf("new")}, {folder / "b", BytesOf("new")}};
        size_t failed = 0;
        WriteWholeFiles(contents, failed, recorder.files);
        _exit(0);
      }
      int status = 0;
      waitpid(writer, &status, 0);
      EXPECT_TRUE(WIFSIGNALED(status));
      EXPECT_EQ(WriteWholeFile(folder / "next", BytesOf("new")), WriteResult::kDone);
      EXPECT_EQ(FilesIn(folder), refused != 0 && killed_at == 2 ? 4 : 3);
      for (int i = 0; i < 2; ++i) {
        Path path = folder / (i == 0 ? "a" : "b");
        if (refused != 0 && i == killed_at - 1) {
          EXPECT_FALSE(std::filesystem::exists(path));
          for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            const auto content = ReadWholeFile(entry.path());
            if (entry.path().extension() == ".kept" && content == BytesOf("before")) path = entry.path();
          }
        }
        EXPECT_EQ(ReadWholeFile(path), BytesOf(i < killed_at - 1 ? "new" : "before")) << path;
      }
    }
  }
}

TEST(Files, SeveralFilesComeBackAlsoWhereTheyHaveNoSecondNames) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder;
  const std::vector<FileContent> contents = {{folder / "a", BytesOf("new")}, {folder / "b", BytesOf("new")}};
  for (const int failing : {7, 8, 0}) {  // the first and the second renaming, none
    for (const FileContent& one : contents) PutFile(one.path, BytesOf("before"));
    recorder.FailStep(failing);
    size_t refused = 0;
    link_error = EPERM;
    const WriteResult result = WriteWholeFiles(contents, refused, recorder.files);
    link_error = 0;
    EXPECT_EQ(result, failing == 0 ? WriteResult::kDone : WriteResult::kFailed);
    for (const FileContent& one : contents)
      EXPECT_EQ(ReadWholeFile(one.path), BytesOf(failing == 0 ? "new" : "before")) << failing << one.path;
    EXPECT_EQ(FilesIn(folder), 2);
  }
}

// Something else has taken the first one's name when the second renaming fails.
TEST(Files, WhatCannotGoBackToItsNameIsKeptForGood) {
  for (const int refused : {0, EPERM}) {
    Recorder recorder;
    const Path folder = recorder.context.temporary_folder;
    const FileContent contents[] = {{folder / "a", BytesOf("new")}, {folder / "b", BytesOf("new")}};
    for (const FileContent& one : contents) PutFile(one.path, BytesOf("before"));
    recorder.files.replace = [&](const Path& from, const Path& to) -> Outcome {
      if (to == folder / "a") return SystemFiles().replace(from, to);
      std::filesystem::remove(folder / "a");
      std::filesystem::create_directories(folder / "a" / "inner");
      return std::make_error_code(std::errc::io_error);
    };
    size_t failed = 0;
    link_error = refused;
    EXPECT_EQ(WriteWholeFiles(contents, failed, recorder.files), WriteResult::kFailed);
    link_error = 0;
    EXPECT_EQ(ReadWholeFile(folder / "b"), BytesOf("before"));
    EXPECT_EQ(WriteWholeFile(folder / "next", {}), WriteResult::kDone) << "which removes what is abandoned";
    std::vector<Bytes> kept;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      if (entry.path().extension() == ".kept") kept.push_back(ReadWholeFile(entry.path()).value_or(Bytes{}));
    }
    ASSERT_EQ(kept.size(), 1u) << refused;
    EXPECT_EQ(kept[0], BytesOf("before"));
  }
}

TEST(Files, ProcessesThatWriteOneTargetLeaveOneOfTheirFilesWhole) {
  Recorder recorder;
  const Path target = recorder.context.temporary_folder / "target";
  PutFile(target, Bytes(20000));
  std::vector<pid_t> writers;
  for (const char letter : {'a', 'b', 'c'}) {
    writers.push_back(fork());
    if (writers.back() != 0) continue;
    int status = 0;
    for (int i = 0; i < 60; ++i) {
      const Bytes content(20000, static_cast<uint8_t>(letter));
      // By itself and as one of several.
      size_t refused = 0;
      const FileContent several[] = {{target, content}};
      if (WriteWholeFile(target, content) != WriteResult::kDone ||
          WriteWholeFiles(several, refused) != WriteResult::kDone)
        status = 1;
    }
    _exit(status);
  }
  int missing = 0;
  for (const pid_t writer : writers) {
    int status = -1;
    while (waitpid(writer, &status, WNOHANG) == 0) missing += std::filesystem::exists(target) ? 0 : 1;
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(missing, 0);
  const Bytes last = ReadWholeFile(target).value_or(Bytes{});
  ASSERT_EQ(last.size(), 20000u);
  EXPECT_EQ(last, Bytes(20000, last[0]));
  EXPECT_EQ(FilesIn(recorder.context.temporary_folder), 1);
}

TEST(Folders, AreRemovedAlsoWhenMemoryRunsOutOnce) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder / "folder";
  for (int n = 1;; ++n) {
    std::filesystem::create_directories(folder / "inner");
    for (const char* name : {"a name that is too long to be kept without an allocation", "inner/file"})
      PutFile(folder / name, {});
    const FailingMemory memory(n);
    RemoveFolder(folder);
    if (!memory.Reached()) break;
    EXPECT_FALSE(std::filesystem::exists(folder)) << n;
  }
}

TEST(Files, OnlyWhatReachedTheDiskIsWritten) {
  Recorder recorder;
  const Path target = recorder.context.temporary_folder / "target";
  PutFile(target, BytesOf("old"));
  for (const auto& [error, written] : {std::pair(EIO, false), {EINVAL, true}, {ENOTSUP, true}}) {
    sync_error = error;
    const WriteResult result = WriteWholeFile(target, BytesOf("new"));
    sync_error = 0;
    EXPECT_EQ(result, written ? WriteResult::kDone : WriteResult::kFailed) << error;
    EXPECT_EQ(result.error.value(), written ? 0 : error) << error;
    EXPECT_EQ(ReadWholeFile(target), BytesOf(written ? "new" : "old")) << error;
  }
}

TEST(Interrupts, AreTakenWhileTheyAreWatchedAndGivenBack) {
  static int heard;
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    heard = 0;
    signal(number, [](int signalled) { heard = signalled; });
    {
      const InterruptWatch watch;
      EXPECT_FALSE(InterruptWatch::IsInterrupted()) << number;
      raise(number);
      EXPECT_TRUE(InterruptWatch::IsInterrupted()) << number;
      EXPECT_EQ(heard, 0) << number;
    }
    EXPECT_FALSE(InterruptWatch::IsInterrupted()) << number;
    raise(number);
    EXPECT_EQ(heard, number);
    signal(number, SIG_DFL);
  }
}

// Where requests are taken to the end, one without a watch ends nothing, and the next watch knows of it.
TEST(InterruptsDeathTest, AreTakenToTheEndOfTheProcess) {
  EXPECT_EXIT(
      {
        signal(SIGHUP, SIG_IGN);
        InterruptWatch::TakeToTheEnd();
        raise(SIGTERM);
        bool first = false;
        bool second = true;
        {
          const InterruptWatch watch;
          first = InterruptWatch::IsInterrupted();
        }
        {
          const InterruptWatch watch;
          raise(SIGHUP);
          second = InterruptWatch::IsInterrupted();
        }
        raise(SIGINT);
        raise(SIGALRM);
        _exit(first && !second ? 7 : 8);
      },
      testing::ExitedWithCode(7), "");
}

TEST(Files, AReadThatFailsIsNoEnd) {
  if (!std::filesystem::exists("/proc/self/mem")) GTEST_SKIP();
  EXPECT_FALSE(ReadWholeFile("/proc/self/mem"));  // its first pages are no memory: reading them fails
  Bytes content;
  EXPECT_EQ(CauseOf(ReadWholeFile("/proc/self/mem", content).error), Cause::kFault);
  EXPECT_EQ(CauseOf(WhyUnreadable("/proc/self/mem")), Cause::kFault);
}

TEST(Files, AWriteGoesThroughLinksAlsoWhereNothingStandsYet) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder, target = folder / "inner" / "target";
  std::filesystem::create_directory(folder / "inner");
  std::filesystem::create_directory_symlink("inner", folder / "way");
  std::filesystem::create_symlink("way/second", folder / "first");
  std::filesystem::create_symlink("../inner/target", folder / "inner" / "second");
  std::filesystem::create_symlink("circle", folder / "circle");
  std::filesystem::create_symlink("none/file", folder / "astray");
  for (const char* content : {"new", "another"}) {
    EXPECT_FALSE(WhyNotWritable(folder / "first"));
    EXPECT_EQ(WriteWholeFile(folder / "first", BytesOf(content)), WriteResult::kDone);
    EXPECT_EQ(ReadWholeFile(target), BytesOf(content));
  }
  for (const char* name : {"circle", "astray"}) {
    EXPECT_TRUE(WhyNotWritable(folder / name)) << name;
    EXPECT_EQ(WriteWholeFile(folder / name, BytesOf("x")), WriteResult::kCannotCreate) << name;
    EXPECT_TRUE(SameFile(folder / name, folder / "." / name)) << name;
  }
  for (const char* name : {"first", "way", "inner/second", "circle", "astray"})
    EXPECT_TRUE(std::filesystem::is_symlink(folder / name)) << name;
  EXPECT_EQ(FilesIn(folder) + FilesIn(folder / "inner"), 5 + 2);
}

TEST(Files, APipeIsWrittenToAndStays) {
  Recorder recorder;
  const Path pipe = recorder.context.temporary_folder / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::optional<Bytes> read;
  std::thread reader([&] { read = ReadWholeFile(pipe); });
  EXPECT_EQ(WriteWholeFile(pipe, BytesOf("through")), WriteResult::kDone);
  reader.join();
  EXPECT_EQ(read, BytesOf("through"));
  EXPECT_TRUE(std::filesystem::is_fifo(pipe));
  EXPECT_EQ(WriteWholeFile("/dev/full", BytesOf("lost")), WriteResult::kFailed);
}
#endif

TEST(Files, LongPathsWork) {
  Recorder recorder;
  Path folder = recorder.context.temporary_folder;
  for (int i = 0; i < 2; ++i) folder /= std::string(100, 'x');
  std::filesystem::create_directories(folder);
  const Path file = folder / (std::string(60, 'y') + ".bin");
  PutFile(file, BytesOf("deep"));
  EXPECT_EQ(ReadWholeFile(file), BytesOf("deep"));
}

TEST(Text, ConvertsEveryByteBothWays) {
  std::string all;
  for (int i = 1; i < 256; ++i) all.push_back(static_cast<char>(i));
  EXPECT_EQ(LatinFromUtf8(Utf8FromLatin(all)), all);
  EXPECT_EQ(Utf8FromUtf16(Utf16FromUtf8(Utf8FromLatin(all))), Utf8FromLatin(all));
  EXPECT_EQ(Utf8FromLatin("\x80 \xE9"), "\xE2\x82\xAC \xC3\xA9");
}

TEST(Text, DamagedTextNeverReadsOn) {
  const struct {
    const char *text, *latin;
  } rows[] = {{"\xE2\x82", "??"},
              {"\xC0\xAF", "??"},
              {"a\xF0\x9F\x98\x80z", "a?z"},
              {"\xED\xA0\x80", "???"},
              {"\xFF", "?"}};
  for (const auto& row : rows) EXPECT_EQ(LatinFromUtf8(row.text), row.latin) << row.text;
  EXPECT_EQ(Utf8FromUtf16(std::u16string(1, char16_t{0xD800})), "\xEF\xBF\xBD");
  EXPECT_EQ(Utf8FromUtf16(Utf16FromUtf8("\xF0\x9F\x98\x80")), "\xF0\x9F\x98\x80");
}

TEST(Text, IsShownShortAndPrintable) {
  const std::string most(60, 'x'), euros = "\xE2\x82\xAC";
  const std::pair<std::string, std::string> rows[] = {{"", ""},
                                                      {most, most},
                                                      {most + "y", most + "..."},
                                                      {std::string("a\0\n\x7F\xC2\x85\xFFz", 8), "a?????z"},
                                                      {euros + euros, euros + euros}};
  for (const auto& [text, shown] : rows) EXPECT_EQ(ShownText(text), shown);
}

TEST(Clock, TakesRealTimesOnly) {
  EXPECT_EQ(ParseLocalTime("2024-02-29 23:59:58")->second, 58);
  constexpr int kLast[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (const int year : {1900, 2000, 2023, 2024}) {
    for (int month = 1; month <= 12; ++month) {
      const int last = kLast[month - 1] + (month == 2 && (year == 2000 || year == 2024) ? 1 : 0);
      for (const int day : {0, 1, last, last + 1}) {
        const std::string text = Format("%04d-%02d-%02d 23:59:59", year, month, day);
        EXPECT_EQ(ParseLocalTime(text).has_value(), day >= 1 && day <= last) << text;
      }
    }
  }
  for (const char* text :
       {"2024-00-01 00:00:00", "2024-13-01 00:00:00", "2024-01-01 24:00:00", "2024-01-01 00:60:00",
        "2024-01-01 00:00:60", "2024-01-01", "2024-01-01T00:00:00", ""}) {
    EXPECT_FALSE(ParseLocalTime(text)) << text;
  }
}

TEST(Settings, MemoryStoreTellsNewKeysFromOldOnes) {
  const SettingsStore store = MemorySettingsStore();
  store.write("a\\b", "x", "lost: the key was never opened");
  EXPECT_FALSE(store.read("a\\b", "x"));
  EXPECT_EQ(store.open("a\\b"), KeyState::kCreated);
  EXPECT_EQ(store.open("a\\b"), KeyState::kExisted);
  store.write("a\\b", "x", "1");
  EXPECT_EQ(store.read("a\\b", "x"), "1");
}

TEST(Settings, SystemStoreKeepsValuesBetweenStores) {
  Recorder recorder;
#if !defined(_WIN32)
  setenv("XDG_CONFIG_HOME", recorder.context.temporary_folder.c_str(), 1);
#endif
  const std::string key =
      "Software\\QMV\\VexaEditorTest\\" + Utf8FromPath(recorder.context.temporary_folder.filename());
  EXPECT_EQ(SystemSettingsStore().open(key), KeyState::kCreated);
  const std::string awkward = "C:\\a=b]%41\xE2\x82\xAC";
  SystemSettingsStore().write(key, "na=me", awkward);
  EXPECT_EQ(SystemSettingsStore().open(key), KeyState::kExisted);
  EXPECT_EQ(SystemSettingsStore().read(key, "na=me"), awkward);
  EXPECT_FALSE(SystemSettingsStore().read(key, "other"));
}

#if !defined(_WIN32)
TEST(Settings, AStoreThatCannotBeReadIsNotWrittenOver) {
  Recorder recorder;
  setenv("XDG_CONFIG_HOME", recorder.context.temporary_folder.c_str(), 1);
  const SettingsStore store = SystemSettingsStore();
  const Path file = recorder.context.temporary_folder / "vexa-editor" / "settings.ini";
  EXPECT_EQ(store.place, Utf8FromPath(file));
  std::filesystem::create_directories(file);
  const OpenedKey opened = store.open("a");
  EXPECT_EQ(opened, KeyState::kUnavailable);
  EXPECT_EQ(CauseOf(opened.error), Cause::kFolder);
  EXPECT_EQ(CauseOf(store.write("a", "x", "1").error), Cause::kFolder);
  EXPECT_FALSE(store.read("a", "x"));
  EXPECT_TRUE(std::filesystem::is_empty(file));
  std::filesystem::remove_all(file.parent_path());
  PutFile(file.parent_path(), {});
  EXPECT_EQ(CauseOf(store.open("a").error), Cause::kNoFolder);
}
#endif

TEST(Files, PathsAreMadePlainAsTheyAreWritten) {
  const std::pair<const char*, const char*> rows[] = {{"/a/./b//c/", "/a/b/c"},
                                                      {"/a/b/../../../c", "/c"},
                                                      {"a/..", "."},
                                                      {"../a/../../b", "../../b"},
                                                      {"./a", "a"},
                                                      {"/", "/"},
                                                      {"/a/..b/.c", "/a/..b/.c"},
                                                      {"", "."}};
  for (const auto& [path, plain] : rows) EXPECT_EQ(PlainPath(path), Path(plain).make_preferred()) << path;
}

}  // namespace
}  // namespace vexa
