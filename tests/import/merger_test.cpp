#include "import/merger.h"

#include <gtest/gtest.h>

#include "tests/support/recorder.h"

namespace vexa {
namespace {

using Texts = std::vector<std::string>;

TEST(Merger, SatcodxVersion) {
  const std::pair<const char*, bool> cases[] = {
      {"SATCODX_03", true},  {"SATCODX102", true}, {"satcodx 03x", true}, {"SATCODX_04", false},
      {"SATCODX_13", false}, {"SATCODX_0", false}, {"SATCODY_03", false}, {"", false}};
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "a.sdx";
  for (const auto& [start, passes] : cases) {
    PutFile(path, BytesOf(start));
    EXPECT_EQ(IsSatcodxVersion2Or3(start), passes) << start;
    Merger merger;
    EXPECT_EQ(AddMergeFile(recorder.context, merger, path), passes);
    const Texts refused = {
        "SatcoDX Merger allows only SatcoDX Protocol Version 2 and 3.\nPlease download latest "
        "SatcoDX ( SDX ) file from website"};
    EXPECT_EQ(recorder.Texts(), passes ? Texts{} : refused);
    // The version matters in this mode alone, and for single files alone.
    Merger other{ListFormat::kLyngsat, {}};
    EXPECT_TRUE(AddMergeFile(recorder.context, other, path));
    EXPECT_TRUE(AddMergeFolder(recorder.context, merger, recorder.context.temporary_folder));
    EXPECT_EQ(merger.files.size(), 1u);
  }
}

TEST(Merger, AListThatCannotBeReadIsNoOtherVersion) {
  const Path broken = "/proc/self/mem";  // can be opened, and nothing is mapped at its start
  if (Path::preferred_separator != '/' || !std::filesystem::exists(broken)) GTEST_SKIP();
  Recorder recorder;
  Merger merger;
  EXPECT_FALSE(AddMergeFile(recorder.context, merger, broken));
  ASSERT_EQ(recorder.shown.size(), 1u);
  EXPECT_EQ(recorder.shown[0].text, "Could not read file \"/proc/self/mem\".");
  EXPECT_EQ(recorder.shown[0].detail, ReadReason(broken, std::make_error_code(std::errc::io_error)));
}

TEST(Merger, SamePathOnce) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder;
  PutFile(folder / "a.dvb", BytesOf("A"));
  Merger merger{ListFormat::kDvb2000, {}};
  EXPECT_TRUE(AddMergeFile(recorder.context, merger, folder / "a.dvb"));
  EXPECT_FALSE(AddMergeFile(recorder.context, merger, folder / "a.dvb"));
  EXPECT_EQ(recorder.Texts(), Texts{"Duplication of files not allowed."});
  EXPECT_TRUE(AddMergeFile(recorder.context, merger, folder / "." / "a.dvb"));
  EXPECT_EQ(merger.files.size(), 2u);
}

TEST(Merger, Folder) {
  const struct {
    ListFormat format;
    Texts names;
    const char* empty;
  } cases[] = {
      {ListFormat::kSatcodx, {"a.SDX", "B.sdx", "c.sdx"}, "No SatcoDX ( SDX ) file found."},
      {ListFormat::kLyngsat, {"x.dat"}, "No Lyngsat ( DAT ) file found."},
      {ListFormat::kDvb2000, {"y.dvb"}, "No DVB2000 ( DVB ) file found."},
  };
  for (const auto& c : cases) {
    Recorder recorder;
    const Path folder = recorder.context.temporary_folder;
    Merger merger{c.format, {}};
    EXPECT_FALSE(AddMergeFolder(recorder.context, merger, folder));
    EXPECT_FALSE(AddMergeFolder(recorder.context, merger, folder / "none"));
    EXPECT_EQ(recorder.Texts(), (Texts{c.empty, c.empty}));
    for (const char* name : {"c.sdx", "B.sdx", "a.SDX", "x.dat", "y.dvb", "sdx", "z.sdxx"})
      PutFile(folder / name, {});
    std::filesystem::create_directory(folder / "folder.sdx");
    merger.files.push_back(folder / c.names.back());
    EXPECT_TRUE(AddMergeFolder(recorder.context, merger, folder));
    Texts names;
    for (const Path& path : merger.files) names.push_back(Utf8FromPath(path.filename()));
    Texts expected = c.names;
    std::rotate(expected.begin(), expected.end() - 1, expected.end());  // the one that was there leads
    EXPECT_EQ(names, expected);
    EXPECT_TRUE(recorder.shown.empty());
    recorder.files.list = [](const Path&, std::vector<Path>&) -> Outcome {
      return std::make_error_code(std::errc::io_error);
    };
    EXPECT_FALSE(AddMergeFolder(recorder.context, merger, folder));
    EXPECT_EQ(recorder.Details(), Texts{ReadReason(folder, std::make_error_code(std::errc::io_error))});
    EXPECT_EQ(merger.files.size(), c.names.size());
  }
}

TEST(Merger, JoinsBytesInOrder) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder;
  PutFile(folder / "1.sdx", Bytes{'b', 0, 26});
  PutFile(folder / "2.sdx", BytesOf("a\r\n"));
  Merger merger{ListFormat::kSatcodx, {folder / "1.sdx"}};
  EXPECT_FALSE(CanMerge(recorder.context, merger));
  ASSERT_EQ(recorder.shown.size(), 1u);
  EXPECT_EQ(recorder.shown[0].icon, Icon::kWarning);
  EXPECT_EQ(recorder.Texts(), Texts{"Select atleast two files."});
  merger.files = {folder / "1.sdx", folder / "none.sdx", folder / "2.sdx"};
  EXPECT_TRUE(CanMerge(recorder.context, merger));
  const Path output = folder / "out.sdx";
  std::vector<uint64_t> seen;
  recorder.context.progress.range = [&](uint64_t total) { seen.push_back(total); };
  recorder.context.progress.position = [&](uint64_t position) { seen.push_back(position); };
  const auto merged = WriteMerged(recorder.context, merger, output);
  ASSERT_TRUE(merged);
  EXPECT_EQ(merged->written, WriteResult::kDone);
  EXPECT_EQ(seen, (std::vector<uint64_t>{3, 1, 2, 3}));
  TellMerged(recorder.context, output, *merged);
  EXPECT_EQ(recorder.shown.at(0).detail.find("Left out: " + Utf8FromPath(folder / "none.sdx")), 0u);
  EXPECT_EQ(*ReadWholeFile(output), (Bytes{'b', 0, 26, 'a', '\r', '\n'}));
  EXPECT_EQ(recorder.shown.at(0).icon, Icon::kInformation);
  EXPECT_EQ(recorder.Texts(), Texts{Utf8FromPath(output) + " \n file is generated successfully."});
}

// A list that is joined is not replaced by the result, whatever its path is called.
TEST(Merger, OutputOverAnInput) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder, first = folder / "1.dat", second = folder / "2.dat";
  PutFile(first, BytesOf("one"));
  PutFile(second, BytesOf("two"));
  const Merger merger{ListFormat::kLyngsat, {first, second, folder / "gone.dat"}};
  for (const Path& path : {second, folder / "." / "2.dat", folder / "gone.dat"}) {
    EXPECT_FALSE(CanMergeInto(recorder.context, merger, path)) << Utf8FromPath(path);
    EXPECT_EQ(recorder.Texts(), Texts{"The merged file cannot be one of the selected files."});
  }
  EXPECT_TRUE(CanMergeInto(recorder.context, merger, folder / "3.dat"));
  EXPECT_TRUE(recorder.shown.empty());
}

TEST(Merger, FailedWriteLeavesTheOldFile) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder, output = folder / "out.dat";
  PutFile(folder / "1.dat", BytesOf("one"));
  PutFile(folder / "2.dat", BytesOf("two"));
  PutFile(output, BytesOf("old"));
  const Merger merger{ListFormat::kLyngsat, {folder / "1.dat", folder / "2.dat"}};
  int step = 0;
  bool written = false;
  while (!written && step < 20) {
    EXPECT_EQ(*ReadWholeFile(output), BytesOf("old")) << step;
    recorder.FailStep(++step);
    const auto result = WriteMerged(recorder.context, merger, output);
    ASSERT_TRUE(result);
    TellMerged(recorder.context, output, *result);
    written = result->written == WriteResult::kDone;
    EXPECT_EQ(recorder.Details(), Texts{written ? "" : "It was not written. " + Recorder::FullDisk(output)});
  }
  EXPECT_EQ(step, 6) << "create, two pieces, finish, replace fail one after the other";
  EXPECT_EQ(*ReadWholeFile(output), BytesOf("onetwo"));
}

TEST(Merger, ReadingThatBreaksOffLeavesTheOldFile) {
  const Path broken = "/proc/self/mem";  // can be opened, and nothing is mapped at its start
  if (!std::filesystem::exists(broken)) GTEST_SKIP() << "no file here breaks off";
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder, output = folder / "out.dat";
  PutFile(folder / "1.dat", BytesOf("one"));
  PutFile(output, BytesOf("old"));
  for (const std::vector<Path>& files : {std::vector{folder / "1.dat", broken}, {broken, folder / "1.dat"}}) {
    EXPECT_FALSE(WriteMerged(recorder.context, {ListFormat::kLyngsat, files}, output));
    EXPECT_EQ(recorder.Texts(), Texts{"Could not read file \"" + Utf8FromPath(broken) + "\"."});
    EXPECT_EQ(*ReadWholeFile(output), BytesOf("old"));
  }
}

TEST(Merger, Move) {
  const struct {
    std::vector<size_t> positions;
    size_t before, first;
    const char* order;
  } cases[] = {
      {{}, 2, 2, "abcde"},     {{0}, 0, 0, "abcde"},
      {{0}, 1, 0, "abcde"},    {{0}, 2, 1, "bacde"},
      {{0}, 5, 4, "bcdea"},    {{4}, 0, 0, "eabcd"},
      {{1, 3}, 0, 0, "bdace"}, {{1, 3}, 2, 1, "abdce"},
      {{1, 3}, 5, 3, "acebd"}, {{0, 1, 2, 3, 4}, 3, 0, "abcde"},
      {{9}, 9, 5, "abcde"},
  };
  for (const auto& c : cases) {
    Merger merger{ListFormat::kDvb2000, {"a", "b", "c", "d", "e"}};
    EXPECT_EQ(MoveMergeFiles(merger, c.positions, c.before), c.first) << c.order;
    std::string order;
    for (const Path& path : merger.files) order += Utf8FromPath(path);
    EXPECT_EQ(order, c.order);
  }
}

TEST(Merger, Remove) {
  Merger merger{ListFormat::kDvb2000, {"a", "b", "c", "d"}};
  RemoveMergeFiles(merger, {});
  EXPECT_EQ(merger.files.size(), 4u);
  RemoveMergeFiles(merger, {0, 2});
  EXPECT_EQ(merger.files, (std::vector<Path>{"b", "d"}));
}

}  // namespace
}  // namespace vexa
