#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

#include <thread>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/settings_store.h"
#include "platform/text.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

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
    EXPECT_EQ(ReadWholeFile(target), before) << step;
  }
  EXPECT_EQ(ReadWholeFile(target), after);
  int files = 0;
  for ([[maybe_unused]] const auto& entry :
       std::filesystem::directory_iterator(recorder.context.temporary_folder))
    ++files;
  EXPECT_EQ(files, 1);
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

#if !defined(_WIN32)
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

TEST(Clock, TakesRealTimesOnly) {
  EXPECT_EQ(ParseLocalTime("2024-02-29 23:59:58")->second, 58);
  for (const char* text : {"2023-02-29 00:00:00", "2024-13-01 00:00:00", "2024-01-01 24:00:00", "2024-01-01",
                           "2024-01-01T00:00:00", ""}) {
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

}  // namespace
}  // namespace vexa
