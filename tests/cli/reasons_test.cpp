// Every failure tells its fixed text and, below it, the object, what the system said and what to do.
#include "core/bin_file.h"
#include "image/transfer_files.h"
#include "platform/pseudo_terminal.h"
#include "tests/cli/cli_test.h"

namespace vexa {
namespace {

struct Reasons : CliTest {
  Reasons() {
    std::mt19937 random(3);
    Document document = NewDocument();
    document.sdbs[0].database = MakeRandomDatabase(random, {3, 2, 4, 8, 2, false, false});
    Save(document, "base.bin");
    Put("text", "neither a database nor a configuration, nor anything else");
    Put("list.dvb", "DVSO");
  }
  // Ends with status 1, these two lines and nothing made.
  void Expect(const std::string& line, const std::string& text, const std::string& detail) {
    const ProgramResult result = Vexa(line);
    EXPECT_EQ(result.status, 1) << line;
    EXPECT_EQ(result.errors, text + "\ninfo: " + detail + "\n") << line;
    EXPECT_EQ(result.output, "") << line;
    EXPECT_FALSE(Exists("out")) << line;
  }
};

constexpr const char *kFile3 = "error: Error No: -3 \n File Access Error!!!",
                     *kUnable = "error: Unable to open the given file.",
                     *kUpdate = "error: File access error - UpdateConfig",
                     *kListFiller = "error: File access error - AddConfigurationListToComboBox";

TEST_F(Reasons, FilesThatCannotBeRead) {
  std::filesystem::create_directory(At("folder"));
  const std::tuple<std::string, std::string, Path> rows[] = {
      {"info @none", kFile3, "none"},
      {"info @folder", kFile3, "folder"},
      {"save @base.bin/in -o @out", kFile3, "base.bin/in"},
      {"diff @base.bin @none", kFile3, "none"},
      {"sort --like @none @base.bin -o @out", kFile3, "none"},
      {"import @none.sdx -o @out", kUnable, "none.sdx"},
      {"import @none.json -o @out", kUnable, "none.json"},
      {"merge lyngsat @none @text -o @out", kUnable, "none"},
      {"ecf show @none", kListFiller, "none"},
      {"ecf show @none --toml", kListFiller, "none"},
      {"ecf show @folder --select 0/0/0", kUpdate, "folder"},
      {"ecf build @none -o @out", "error: Can't open file " + In("none"), "none"},
      {"adb request --ecf @none -o @out", kUpdate, "none"},
      {"adb decode @none -o @out", "error: File access error", Path("none") / kAdbImageFile},
      {"urt build @none -o @out --type 3 --kind 1 --flag 0 --name n --start 0 --end 100", kFile3, "none"},
      {"urt show @none", kFile3, "none"},
      {"upload urt @none --port P", "error: File access error - UploadURTPacketThread", "none"}};
  for (const auto& [line, text, name] : rows) {
    const auto why = WhyUnreadable(At("") / name);
    EXPECT_TRUE(why) << line;
    Expect(line, text, ReadReason(At("") / name, why));
  }
  // Half of a memory would replace the whole one.
  std::filesystem::create_directory(At("folder/space1-00000000.bin"));
  Expect("loader --link @text --memory @folder",
         "error: Could not read the memory from \"" + In("folder") + "\".",
         ReadReason(At("folder") / "space1-00000000.bin", std::make_error_code(std::errc::is_a_directory)));
  EXPECT_TRUE(Exists("folder/space1-00000000.bin"));
}

TEST_F(Reasons, FilesThatCannotBeWritten) {
  const std::string image = "urt build @text --type 3 --kind 1 --flag 0 --name n --start 0 --end 100 -o ";
  const auto uncreated = [this](const Path& name) {
    return "error: Could not creat file \"" + Utf8FromPath(At("") / name) + "\".";
  };
  const Path in_file = Path("base.bin/x") / kAdbImageFile;
  const std::tuple<std::string, std::string, Path> rows[] = {
      {"save @base.bin -o @none/x", uncreated("none/x"), "none/x"},
      {"save @base.bin -o @base.bin/x", uncreated("base.bin/x"), "base.bin/x"},
      {"sort @base.bin --satellites name -o @none/x", "error: Save as operation failed!!.", "none/x"},
      {"export @base.bin -o @none/x", uncreated("none/x"), "none/x"},
      {"import @list.dvb --stream -o @none/x", uncreated("none/x"), "none/x"},
      {"merge lyngsat @text @list.dvb -o @none/x", uncreated("none/x"), "none/x"},
      {"adb request -o @none/x", uncreated("none/x"), "none/x"},
      {"adb build @base.bin -o @base.bin/x", uncreated(in_file), in_file},
      {image + "@none/x", kFile3, "none/x"},
      {"download --port P -o @none/x", uncreated("none/x"), "none/x"},
      {"upload adb @base.bin --port P --trace @none/x", uncreated("none/x"), "none/x"}};
  for (const auto& [line, text, name] : rows) {
    const auto why = WhyNotWritable(At("") / name);
    EXPECT_TRUE(why) << line;
    Expect(line, text, WriteReason(At("") / name, why));
  }
#if !defined(_WIN32)
  const std::string full =
      "/dev/full: No space left on device. No space is left there: free some, or choose another disk.";
  Expect("save @base.bin -o /dev/full", "error: Error No: -11 \n Save as BIN File", full);
  Expect("export @base.bin -o /dev/full", "error: Could not write file \"/dev/full\".", full);
  Expect(image + "/dev/full", "error: Could not write file \"/dev/full\".", full);
#endif
}

TEST_F(Reasons, FilesThatAreNotWhatTheyShouldBe) {
  Document document = NewDocument();
  std::mt19937 random(4);
  document.sdbs.clear();
  for (uint32_t slot = 0; slot < 2; ++slot)
    document.sdbs.push_back({slot, "S", MakeRandomDatabase(random, {3, 2, 4, 8, 2, false, false})});
  Save(document, "two.bin");
  Bytes damaged = Get("two.bin");
  const Bytes magic = {'Q', 'z'};
  const auto last = std::find_end(damaged.begin(), damaged.end(), magic.begin(), magic.end());
  *last = 'X';  // of the second stream
  PutFile(At("two.bin"), damaged);
  const std::string mismatch = "error: StaticDB file magic ID mismatch. Input a valid SDB.";
  const std::string no_database = ": It is no database file: choose another one.",
                    no_configuration = ": It is no configuration file: choose another one.";
  Expect("info @two.bin", mismatch, In("two.bin") + ": SDB 2 of 2" + no_database);
  Expect("info @text", mismatch, In("text") + no_database);
  Put("short", "Qz");
  Expect("info @short", "error: Invalid or unknown file format.",
         In("short") + ": It is shorter than its header. The file is damaged: use another copy of it.");
  Expect("ecf show @text", "error: Config magic id mismatch - AddConfigurationListToComboBox",
         In("text") + no_configuration);
  Expect("adb request --ecf @text -o @out", "error: Magic Id mismatch - InitConfig",
         In("text") + no_configuration);
  Put("text.sdx", "no list");
  Expect("import @text.sdx -o @out", "error: Error - Invalid File",
         In("text.sdx") +
             ": It does not begin as a list of its kind does. Choose a channel list, or say its format.");
  Expect("import @list.dvb -o @out", "error: Add atleast one LNB and Satellite to save as a bin",
         In("list.dvb") + ": SDB1 has no satellite.");
}

TEST_F(Reasons, WhatToDoNext) {
  Put("bytes", std::string(100, 'b'));
  Put("bad.csv", "record,lnb\r\nlnb,1\r\n");
  Put("no.json", "{\n\n\"a\": b");
  const std::string room = "error: Image exceeds the allowed memory space.",
                    correct = ": Correct it there, or export the database again.",
                    choose = ": choose a higher end address or a smaller image.";
  const auto build = [](const std::string& options) {
    return "urt build @bytes -o @out --kind 1 --flag 0 --name n " + options;
  };
  Expect(build("--type 3 --start 9 --end 5"), room,
         In("bytes") + ": The end address 0x5 lies below the start address 0x9: choose one above it.");
  const std::string rows[][2] = {{"--type 3 --start 1 --end 100",
                                  "100 bytes and its header 0, from start to end "
                                  "address there are 99"},
                                 {"--type 1 --start 0 --end 163",
                                  "100 bytes and its header 64, from start to end "
                                  "address there are 163"},
                                 {"--type 1 --start 7 --end 7",
                                  "100 bytes and its header 64, from start to end "
                                  "address there are 0"}};
  for (const auto& [options, sizes] : rows)
    Expect(build(options), room, In("bytes") + ": The image takes " + sizes + choose);
  Expect(build("--type 3 --start 0 --end 0x8000001"), room,
         In("bytes") +
             ": From start to end address there are 134217729 bytes, 134217728 at most can be sent: "
             "choose a lower end address.");
  Expect("import @bad.csv -o @out", "error: line 1: column \"frequency1\" is missing",
         In("bad.csv") + correct);
  Expect("import @no.json -o @out", "error: line 3: is no JSON", In("no.json") + correct);
  Expect("merge dvb2000 @list.dvb @list.dvb -o @out", "error: Duplication of files not allowed.",
         In("list.dvb") + ": It is in the list already. Choose other files.");
  // What was read of it is printed all the same.
  const ProgramResult urt = Vexa("urt show @text");
  EXPECT_EQ(urt.status, 1);
  EXPECT_EQ(urt.errors, "error: The file is no URT file.\ninfo: " + In("text") +
                            ": Choose a URT file, or make one of an image with \"vexa urt build\".\n");
  EXPECT_THAT(urt.output, testing::HasSubstr("does not begin with \"MZ\""));
}

TEST_F(Reasons, NumbersBeyondWhatThereIs) {
  const std::string one = "error: Number 2 is beyond the 1 that there are.";
  Expect("export @base.bin --sdb 2 -o @out", one, "SDB: choose from 1 to 1.");
  Expect("save @base.bin --ubi 2 -o @out", "error: Number 2 is beyond the 0 that there are.",
         "user box record: there is none.");
  Expect("save @base.bin --sdb 1 --satellites 99 -o @out",
         "error: Number 99 is beyond the 85 that there are.", "satellite: choose from 1 to 85.");
  Expect("set @base.bin -o @out 'lnb 17' power=1", "error: Number 17 is beyond the 16 that there are.",
         "LNB: choose from 1 to 16.");
  const ProgramResult image = Vexa("upload sdb @base.bin --port P --image-type 77");
  EXPECT_THAT(image.errors,
              testing::MatchesRegex("error: The configuration has no image type 77.\ninfo: "
                                    "configuration .*/.*: choose one of its . regions, from 0.\n"));
}

#if !defined(_WIN32)
TEST_F(Reasons, PortsThatRefuse) {
  auto terminal = OpenPseudoTerminal(At("line")).value;
  if (!terminal) GTEST_SKIP() << "no pseudo-terminals on this system";
  const std::string library = "error: Port is not available.\ninfo: ";
  const auto errors = [this](const std::string& options) {
    const ProgramResult result = Vexa("upload urt @text " + options);
    EXPECT_EQ(result.status, 1);
    return result.errors;
  };
  EXPECT_THAT(errors("--port @text"),
              testing::StartsWith(library + In("text") +
                                  ": Inappropriate ioctl for device. Choose a serial port.\n"));
  EXPECT_THAT(errors("--port @line --stop-bits 1.5 --timeout 0.05"),
              testing::StartsWith("error: Error - SetCommState.\ninfo: " + In("line") +
                                  ": Invalid argument. Choose other line parameters, or another port.\n"));
  EXPECT_THAT(Vexa("loader --link @none/line").errors,
              testing::HasSubstr("error: No line can be made or opened at \"" + In("none/line") +
                                 "\".\ninfo: " + In("none/line") +
                                 ": No such file or directory. Make the folder first, or "));
  EXPECT_THAT(Vexa("loader --link @text").errors,
              testing::HasSubstr("error: No line can be made or opened at \"" + In("text") +
                                 "\".\ninfo: " + In("text") +
                                 ": It is no serial port. Choose a name that is not taken, or a "
                                 "serial port.\n"));
  const auto held = SystemCommApi().create_file(terminal->path);
  ASSERT_TRUE(held);
  // What stands behind the name is this test's, whatever it is called.
  EXPECT_THAT(errors("--port @line"), testing::StartsWith(library + In("line") + " is in use by "));
}
#endif

}  // namespace
}  // namespace vexa
