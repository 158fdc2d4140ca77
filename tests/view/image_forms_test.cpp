// The models of the image dialogs: what they refuse, and files there and back.
#include <gtest/gtest.h>

#include <fstream>

#include "tests/image/image_maker.h"
#include "tests/support/recorder.h"
#include "view/compression_form.h"
#include "view/target_file.h"
#include "view/urt_form.h"

namespace vexa {
namespace {

const LocalTime kTime{2020, 2, 3, 4, 5, 6};

Bytes Pattern(size_t size) {
  Bytes bytes(size);
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i * i >> 5);
  return bytes;
}

class UrtFormTest : public testing::Test {
 protected:
  Path Put(const std::string& name, const Bytes& content) {
    const Path path = recorder_.context.temporary_folder / PathFromUtf8(name);
    PutFile(path, content);
    return path;
  }
  Recorder recorder_;
  ProjectConfig config_ = MakeImageConfig(0);
};

TEST_F(UrtFormTest, OpensWithTheConfigurationsChoices) {
  config_.image_type_index = 1;
  config_.compressed_image = true;
  config_.compression_type = 1;
  config_.compression_level = 8;
  const UrtForm dialog = OpenUrtForm(config_);
  EXPECT_EQ(dialog.regions, (std::vector<std::string>{"Boot", "Application data", "Other"}));
  EXPECT_EQ(dialog.software_major + "." + dialog.software_minor, "7.5");
  EXPECT_EQ(std::tuple(dialog.compressed, dialog.compression_type, dialog.compression_level),
            std::tuple(true, 1, 8));
  const UrtRow row = MakeUrtRow(config_, Path("folder") / "some.image.bin");
  EXPECT_EQ(row.urt, Path("folder") / "some.image.urt");
  EXPECT_EQ(row.region, 1);
  EXPECT_EQ(row.name, "Application data");
  config_.image_type_index = 99;
  EXPECT_EQ(MakeUrtRow(config_, "x").region, 0) << "an index beyond the list";
  config_.regions.clear();
  EXPECT_EQ(MakeUrtRow(config_, "x").region, -1);
}

TEST_F(UrtFormTest, ImageAndRegionBringTheirNamesUntilTheUserGaveOne) {
  const UrtForm dialog = OpenUrtForm(config_);
  UrtRow row = MakeUrtRow(config_, {});
  EXPECT_EQ(row.urt, Path());
  ChooseUrtImage(row, "x.bin");
  EXPECT_EQ(row.urt, "x.urt");
  row.urt = "my.urt";
  ChooseUrtImage(row, "y.bin");
  EXPECT_EQ(row.urt, "my.urt");
  ChooseUrtRegion(dialog, row, 2);
  EXPECT_EQ(row.name, "Other");
  row.name = "My own";
  ChooseUrtRegion(dialog, row, 1);
  EXPECT_EQ(row.name, "My own");
  EXPECT_EQ(row.region, 1);
  ChooseUrtRegion(dialog, row, 77);
  EXPECT_EQ(row.name, "My own");
}

TEST_F(UrtFormTest, CompressionIsOfferedWhereTheReceiverCanExpand) {
  const struct {
    uint8_t index;
    std::vector<int> regions;
    bool compressed, bin2cod, expected[3];  // check box, method, level
  } rows[] = {
      {0, {}, true, false, {true, true, true}},        {0, {1}, false, false, {true, false, false}},
      {0, {1}, true, true, {true, true, false}},       {1, {0}, true, false, {true, true, true}},
      {1, {1}, true, false, {false, false, false}},    {2, {1}, true, true, {false, false, false}},
      {1, {1, 1}, true, false, {false, false, false}}, {1, {1, 2}, true, false, {true, true, true}},
      {1, {-1}, true, false, {true, true, true}},
  };
  for (const auto& row : rows) {
    config_ = MakeImageConfig(row.index);
    UrtForm dialog = OpenUrtForm(config_);
    dialog.compressed = row.compressed;
    dialog.compression_type = row.bin2cod;
    for (const int region : row.regions) {
      dialog.rows.push_back(MakeUrtRow(config_, "x.bin"));
      ChooseUrtRegion(dialog, dialog.rows.back(), region);
    }
    const CompressionChoices choices = ChoicesOfCompression(dialog);
    EXPECT_EQ(std::tuple(choices.compressed, choices.method, choices.level),
              std::tuple(row.expected[0], row.expected[1], row.expected[2]))
        << int{row.index} << testing::PrintToString(row.regions);
  }
}

TEST_F(UrtFormTest, RefusesWhatCannotBeConverted) {
  const Path one = Put("one.bin", {1, 2, 3}), two = Put("two.bin", {4});
  const struct {
    const char* what;
    std::function<void(UrtForm&)> spoil;
    int field;
    size_t row;
  } cases[] = {
      {"no rows", [](UrtForm& d) { d.rows.clear(); }, UrtField::kImage, 0},
      {"no image", [](UrtForm& d) { d.rows[1].image.clear(); }, UrtField::kImage, 1},
      {"an image that is not there", [](UrtForm& d) { d.rows[0].image += "x"; }, UrtField::kImage, 0},
      {"a folder", [](UrtForm& d) { d.rows[0].image = d.rows[0].image.parent_path(); }, UrtField::kImage, 0},
      {"no output", [](UrtForm& d) { d.rows[0].urt.clear(); }, UrtField::kUrt, 0},
      {"output over the input", [](UrtForm& d) { d.rows[1].urt = d.rows[1].image; }, UrtField::kUrt, 1},
      {"two to one file", [](UrtForm& d) { d.rows[1].urt = d.rows[0].urt; }, UrtField::kUrt, 1},
      {"two to one file, by letter case",
       [](UrtForm& d) {
         d.rows[0].urt = d.rows[0].urt.parent_path() / "azK.urt";
         d.rows[1].urt = d.rows[0].urt.parent_path() / "." / "AZk.URT";
       },
       UrtField::kUrt, 1},
      {"output over another's input", [](UrtForm& d) { d.rows[0].urt = d.rows[1].image; }, UrtField::kUrt, 0},
      {"output over a link to an input",
       [](UrtForm& d) {
         d.rows[0].urt = d.rows[0].image.parent_path() / "link.urt";
         std::filesystem::create_hard_link(d.rows[1].image, d.rows[0].urt);
       },
       UrtField::kUrt, 0},
      {"no region", [](UrtForm& d) { d.rows[0].region = -1; }, UrtField::kRegion, 0},
      {"a region beyond", [](UrtForm& d) { d.rows[0].region = 3; }, UrtField::kRegion, 0},
      {"a long name", [](UrtForm& d) { d.rows[1].name.assign(50, 'n'); }, UrtField::kName, 1},
      {"major empty", [](UrtForm& d) { d.software_major = ""; }, UrtField::kMajor, 0},
      {"major 256", [](UrtForm& d) { d.software_major = "256"; }, UrtField::kMajor, 0},
      {"major negative", [](UrtForm& d) { d.software_major = "-1"; }, UrtField::kMajor, 0},
      {"minor 16", [](UrtForm& d) { d.software_minor = "16"; }, UrtField::kMinor, 0},
      {"minor no number", [](UrtForm& d) { d.software_minor = "1x"; }, UrtField::kMinor, 0},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    UrtForm dialog = OpenUrtForm(config_);
    dialog.rows = {MakeUrtRow(config_, one), MakeUrtRow(config_, two)};
    dialog.rows[0].name.assign(49, 'n');
    dialog.software_major = "255";
    dialog.software_minor = "15";
    ASSERT_FALSE(CheckUrtForm(dialog).has_value());
    test.spoil(dialog);
    const auto refusal = CheckUrtForm(dialog);
    ASSERT_TRUE(refusal.has_value());
    EXPECT_FALSE(refusal->text.empty());
    EXPECT_EQ(std::pair(refusal->field, refusal->row), std::pair(test.field, test.row));
  }
}

TEST_F(UrtFormTest, ExistingFilesAreAskedAboutOnce) {
  const auto question = [](const Path& path) {
    return Utf8FromPath(path) + " already exists.\nDo you want to replace it ?";
  };
  bool yes_is_default = true;
  const auto ask = recorder_.context.messages.ask;
  recorder_.context.messages.ask = [&](const std::string& text, const std::string& title, bool yes) {
    yes_is_default = yes;
    return ask(text, title, yes);
  };
  const Messages& messages = recorder_.context.messages;
  UrtForm dialog = OpenUrtForm(config_);
  dialog.rows = {MakeUrtRow(config_, Put("one.bin", {1})), MakeUrtRow(config_, Put("two.bin", {2})),
                 MakeUrtRow(config_, Put("three.bin", {3}))};
  EXPECT_EQ(KeptUrt(messages, dialog), std::nullopt);
  dialog.rows[0].agreed.clear();
  const Path second = Put("two.urt", {9}), third = Put("three.urt", {9});
  EXPECT_EQ(KeptUrt(messages, dialog), std::nullopt) << "written by this dialog, which has asked";
  EXPECT_TRUE(recorder_.shown.empty());
  for (UrtRow& row : dialog.rows) row.agreed.clear();
  recorder_.answer = false;
  EXPECT_EQ(KeptUrt(messages, dialog), 1u);
  EXPECT_FALSE(yes_is_default);
  EXPECT_EQ(recorder_.Texts(), std::vector<std::string>{question(second)});
  dialog.rows[1].agreed = second;
  EXPECT_EQ(KeptUrt(messages, dialog), 2u);
  EXPECT_EQ(recorder_.Texts(), std::vector<std::string>{question(third)});
  recorder_.answer = true;
  EXPECT_EQ(KeptUrt(messages, dialog), std::nullopt);
  EXPECT_EQ(KeptUrt(messages, dialog), std::nullopt);
  EXPECT_EQ(recorder_.Texts(), std::vector<std::string>{question(third)});

  CompressionForm compression{.input = dialog.rows[0].image, .output = second};
  recorder_.answer = false;
  EXPECT_FALSE(MayWriteCompressed(messages, compression));
  recorder_.answer = true;
  EXPECT_TRUE(MayWriteCompressed(messages, compression));
  EXPECT_TRUE(MayWriteCompressed(messages, compression));
  EXPECT_EQ(recorder_.Texts(), (std::vector<std::string>{question(second), question(second)}));
  compression.output += "2";
  EXPECT_TRUE(MayWriteCompressed(messages, compression));
  EXPECT_TRUE(recorder_.shown.empty());
}

TEST_F(UrtFormTest, ConvertsEachRowForItsRegion) {
  const Bytes boot = Pattern(900), data = Pattern(5000);
  config_.regions[2] = {"Static", 4, 0, 0x10000};
  UrtForm dialog = OpenUrtForm(config_);
  dialog.software_major = "9";
  dialog.software_minor = "3";
  dialog.compressed = true;
  dialog.compression_level = 8;
  dialog.rows = {MakeUrtRow(config_, Put("boot.bin", boot)), MakeUrtRow(config_, Put("data.bin", data)),
                 MakeUrtRow(config_, Put("b\xC3\xA4se.bin", data))};
  ChooseUrtRegion(dialog, dialog.rows[1], 1);
  ChooseUrtRegion(dialog, dialog.rows[2], 2);
  dialog.rows[0].name = "B\xC3\xBChne";
  std::vector<uint64_t> steps;
  recorder_.context.progress.position = [&](uint64_t position) { steps.push_back(position); };
  ASSERT_EQ(ConvertRows(recorder_.context, config_, dialog, kTime), 3u);
  EXPECT_EQ(steps, (std::vector<uint64_t>{0, 1, 2, 3}));
  EXPECT_TRUE(recorder_.Texts().empty());
  const struct {
    int type, kind;
    std::string name;
    uint32_t start;
    const Bytes& image;
  } expected[] = {{1, 1, "B\xFChne", 0, boot},
                  {0, 4, "Application data", 0x100000, data},
                  {4, 3, "Static", kNoAddress, data}};
  for (size_t i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    const UrtContent urt = ReadUrt(ReadWholeFile(dialog.rows[i].urt).value_or(Bytes{}));
    EXPECT_TRUE(urt.findings.empty());
    EXPECT_EQ(std::tuple(urt.type, urt.kind, urt.name, urt.start),
              std::tuple(expected[i].type, expected[i].kind, expected[i].name, expected[i].start));
    EXPECT_EQ(std::tuple(urt.software_major, urt.software_minor), std::tuple(9, 3));
    EXPECT_EQ(OriginalImage(urt), expected[i].image);
  }
}

TEST_F(UrtFormTest, StopsAtTheFirstFailureAndLeavesTheOldFile) {
  UrtForm dialog = OpenUrtForm(config_);
  dialog.rows = {MakeUrtRow(config_, Put("good.bin", Pattern(10))),
                 MakeUrtRow(config_, Put("large.bin", Pattern(0x2000))),
                 MakeUrtRow(config_, Put("behind.bin", Pattern(10)))};
  const Bytes old = {7, 7, 7};
  PutFile(dialog.rows[1].urt, old);
  EXPECT_EQ(ConvertRows(recorder_.context, config_, dialog, kTime), 1u);
  EXPECT_EQ(recorder_.Texts(), std::vector<std::string>{"Image exceeds the allowed memory space."});
  EXPECT_TRUE(std::filesystem::exists(dialog.rows[0].urt));
  EXPECT_EQ(ReadWholeFile(dialog.rows[1].urt), old);
  EXPECT_FALSE(std::filesystem::exists(dialog.rows[2].urt));
}

TEST_F(UrtFormTest, CompressionGoesThereAndBack) {
  const struct {
    size_t size;
    int level;
    uint8_t mark;  // what the second byte of a stream says of its level
  } rows[] = {{0, 0, 0x01}, {1, 4, 0x5E}, {70000, 5, 0x9C}, {3000000, 6, 0xDA}};
  for (const auto& [size, level, mark] : rows) {
    SCOPED_TRACE(size);
    const Bytes content = size == 3000000 ? Bytes(size, 0) : Pattern(size);
    CompressionForm dialog;
    dialog.level = level;
    dialog.input = Put("file.bin", content);
    dialog.output = ProposeCompressionOutput(dialog.input, false);
    EXPECT_EQ(dialog.output.filename(), "file.bin.z");
    const auto there = RunCompression(recorder_.context, dialog);
    ASSERT_TRUE(there.has_value());
    EXPECT_EQ(there->before, size);
    EXPECT_EQ(ReadWholeFile(dialog.output)->at(1), mark);
    dialog.input = dialog.output;
    dialog.expand = true;
    EXPECT_EQ(ProposeCompressionOutput(dialog.input, true).filename(), "file.bin");
    dialog.output = recorder_.context.temporary_folder / "back.bin";
    ASSERT_TRUE(RunCompression(recorder_.context, dialog).has_value());
    EXPECT_EQ(ReadWholeFile(dialog.output), content);
    EXPECT_TRUE(recorder_.Texts().empty());
  }
}

TEST_F(UrtFormTest, DamagedStreamIsToldOnceAndWritesNothing) {
  CompressionForm dialog{.expand = true, .input = Put("file.txt", Pattern(100)), .output = {}};
  dialog.output = ProposeCompressionOutput(dialog.input, true);
  EXPECT_EQ(dialog.output.filename(), "file.txt.out");
  EXPECT_FALSE(RunCompression(recorder_.context, dialog).has_value());
  EXPECT_EQ(recorder_.Texts(), std::vector<std::string>{"Decompression failed."});
  EXPECT_FALSE(std::filesystem::exists(dialog.output));
}

TEST_F(UrtFormTest, WhatIsNoStreamIsNotReadWhole) {
  CompressionForm dialog{.expand = true, .input = Put("zeros.z", {0}), .output = {}};
  dialog.output = ProposeCompressionOutput(dialog.input, true);
  std::filesystem::resize_file(dialog.input, (uint64_t{1} << 31) + 1);  // more than is ever read whole
  EXPECT_FALSE(RunCompression(recorder_.context, dialog).has_value());
  EXPECT_EQ(recorder_.Texts(), std::vector<std::string>{"Decompression failed."});
}

TEST(TargetFile, NamesThatDifferInCaseAreOneFile) {
  const struct {
    const char *one, *other;
    bool same;
  } rows[] = {{"AZ\u00C0\u00DE\u0391\u03A9\u0400\u040F\u0410\u042F",
               "az\u00E0\u00FE\u03B1\u03C9\u0450\u045F\u0430\u044F", true},
              {"@", "`", false},
              {"[", "{", false},
              {"\u00D7", "\u00F7", false},
              {"\u00DF", "\u00FF", false},
              {"\u03AA", "\u03CA", false},
              {"\u0430", "\u0450", false}};
  for (const auto& row : rows)
    EXPECT_EQ(NameOneFile(PathFromUtf8(row.one), PathFromUtf8(row.other)), row.same) << row.one;
}

TEST_F(UrtFormTest, ANameWithoutAFolderStandsBesideTheInput) {
  const Path one = Put("one.bin", {1, 2, 3}), two = Put("two.bin", {4}), folder = one.parent_path();
  UrtForm form = OpenUrtForm(config_);
  form.rows = {MakeUrtRow(config_, one), MakeUrtRow(config_, two)};
  form.rows[0].urt = "made.urt";
  form.rows[1].urt = Path("..") / "made.urt";
  EXPECT_FALSE(CheckUrtForm(form).has_value());
  EXPECT_EQ(form.rows[0].urt, folder / "made.urt");
  EXPECT_EQ(form.rows[1].urt, folder / ".." / "made.urt");
  CompressionForm compression{.input = one, .output = "one.bin"};
  EXPECT_EQ(CheckCompression(compression)->field, CompressionField::kOutput);
  compression.output = "one.z";
  EXPECT_FALSE(CheckCompression(compression).has_value());
  EXPECT_EQ(compression.output, folder / "one.z");
}

TEST_F(UrtFormTest, CompressionRefusesItsOwnInputAndMissingFiles) {
  CompressionForm dialog;
  EXPECT_EQ(CheckCompression(dialog)->field, CompressionField::kInput);
  dialog.input = Put("file.txt", Pattern(100));
  EXPECT_EQ(CheckCompression(dialog)->field, CompressionField::kOutput);
  dialog.output = dialog.input;
  EXPECT_EQ(CheckCompression(dialog)->field, CompressionField::kOutput);
  dialog.output += "2";
  EXPECT_FALSE(CheckCompression(dialog).has_value());
  dialog.input += "missing";
  EXPECT_EQ(CheckCompression(dialog)->field, CompressionField::kInput);
  EXPECT_EQ(CheckCompression(dialog)->text, "The file does not exist.");
  dialog.input = recorder_.context.temporary_folder;
  EXPECT_EQ(CheckCompression(dialog)->text, "The file cannot be read.");
  EXPECT_EQ(CheckCompression(dialog)->detail,
            ReadReason(dialog.input, std::make_error_code(std::errc::is_a_directory)));
}

}  // namespace
}  // namespace vexa
