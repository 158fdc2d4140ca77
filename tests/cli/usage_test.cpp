// Wrong usage of every command: outputs that are inputs, words that are no commands, versions, help.
#include <nlohmann/json.hpp>

#include "cli/error_stream.h"
#include "generated/version.h"
#include "tests/cli/cli_test.h"
#include "tests/support/ecf_maker.h"

namespace vexa {
namespace {

using testing::HasSubstr;
using testing::Not;

struct Usage : CliTest {
  Usage() {
    std::mt19937 random(5);
    Document document = NewDocument();
    document.sdbs[0].database = MakeRandomDatabase(random, {3, 2, 4, 8, 2, false, false});
    Save(document, "base.bin");
    for (const char* name : {"a.dvb", "b.dvb", "dir/c.dvb", "image.bin", "source.toml", "images/~001adb.bin",
                             "images/~001adb.urt", "work/~001car.bin"}) {
      std::filesystem::create_directories(At(name).parent_path());
      Put(name, name);
    }
  }
};

TEST_F(Usage, AnOutputThatIsAnInputOrAnotherOutputIsRefusedBeforeAnythingIsOpened) {
  const std::string urt = "urt build --type 3 --kind 5 --flag 0 --name N --start 0 --end 99 ";
  const std::string port = " --port @no-port";
  const std::string lines[] = {
      "import @a.dvb -o @a.dvb",
      "import @a.dvb -o @work/../a.dvb",
      "import @a.dvb -o @x.bin --work-dir @x.bin",
      "import @work/~001car.bin -o @x.bin --work-dir @work",
      "import @a.dvb -o @work/~001ser.bin --work-dir @work",
      "export @base.bin -o @base.bin",
      "export @none.bin -o @none.bin",
      "merge dvb2000 @a.dvb @b.dvb -o @b.dvb",
      "merge dvb2000 @a.dvb --folder @dir -o @dir/c.dvb",
      "ecf build @source.toml -o @source.toml",
      urt + "@image.bin -o @image.bin",
      urt + "@image.bin -o @x --ecf @x",
      "adb build @images/~001adb.bin -o @images",
      "adb decode @images -o @images/~001adb.bin",
      "adb request -o @x --ecf @./x",
      "upload adb @base.bin --trace @base.bin" + port,
      "upload sdb @base.bin --trace @no-port" + port,
      "upload urt @image.bin --trace @image.bin" + port,
      "download -o @x --trace @x" + port,
      "download -o @x --ecf @x" + port,
      "loader --link @x --log @x",
      "loader --link @x --memory @x",
      "loader --link @l --memory @x --log @x",
  };
  const auto all = [&] {
    std::map<std::string, Bytes> files;
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(recorder.context.temporary_folder)) {
      if (entry.is_regular_file())
        files[Utf8FromPath(entry.path())] = ReadWholeFile(entry.path()).value_or(Bytes{});
    }
    return files;
  };
  const auto before = all();
  for (const std::string& line : lines) {
    const ProgramResult result = Vexa(line);
    EXPECT_EQ(result.status, 2) << line << result.errors;
    EXPECT_THAT(result.errors, HasSubstr("is also ")) << line;
    EXPECT_EQ(all(), before) << line;
  }
#if !defined(_WIN32)
  std::filesystem::create_symlink("base.bin", At("link"));
  std::filesystem::create_symlink("nowhere", At("dead"));
  std::filesystem::create_hard_link(At("base.bin"), At("hard"));
  for (const std::string line :
       {"export @base.bin -o @link", "export @hard -o @link", "download -o @dead --trace @nowhere --port @p"})
    EXPECT_EQ(Vexa(line).status, 2) << line;
  EXPECT_EQ(Vexa("export @base.bin -o /dev/null").status, 0);
#else
  EXPECT_EQ(Vexa("export @base.bin -o @BASE.bin").status, 2);
#endif
}

TEST_F(Usage, SaveAndSortMayWriteOverTheirInputUnlessItWasNotReadWhole) {
  EXPECT_EQ(Vexa("save @base.bin -o @base.bin").status, 0);
  EXPECT_EQ(Vexa("sort @base.bin -o @base.bin --satellites name").status, 0);
  Document document = Open("base.bin");
  for (int i = 0; i < 17; ++i) document.ubis.push_back({"UBI", {}});  // one more than are opened
  Save(document, "many.bin");
  const Bytes before = Get("many.bin");
  for (const std::string line : {"save @many.bin -o @many.bin", "sort @many.bin -o @many.bin"}) {
    const ProgramResult result = Vexa(line);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("error: " + In("many.bin") +
                                         " was not read whole and stays as it is.\ninfo: Name another file"));
    EXPECT_EQ(Get("many.bin"), before);
  }
  EXPECT_EQ(Vexa("save @many.bin -o @other.bin").status, 0);
  EXPECT_EQ(Open("other.bin").ubis.size(), 16u);
}

TEST_F(Usage, AssignmentsNameTheWrongWordAndWhatAFieldTakes) {
  const std::pair<const char*, const char*> rows[] = {
      {"set @base.bin -o @x 'satelite 1 carrier 2' fec=1",
       "error: \"satelite 1 carrier 2\": \"satelite\" names no records; the nearest is \"satellite\"\n"},
      {"set @base.bin -o @x 'satellite 1 carier 2' fec=1",
       "error: \"satellite 1 carier 2\": \"carier\" names no records; the nearest is \"carrier\"\n"},
      {"set @base.bin -o @x 'satellite 1 service 2' free=1",
       "error: \"satellite 1 service 2\": is no path: lnb"},
      {"set @base.bin -o @x 'satellite 1' anlge=3",
       "error: \"anlge=3\": \"anlge\" is no field that can be set here; the nearest is \"angle\"\n"},
      {"set @base.bin -o @x 'ubi 1' lockcode=3",
       "error: \"lockcode=3\": \"lockcode\" is no field that can be set here; the nearest is "
       "\"lock_code\"\n"},
      {"set @base.bin -o @x 'satellite 1' nam=3",
       "error: \"nam=3\": \"nam\" is no field that can be set here; the nearest is \"name\"\n"},
      {"set @base.bin -o @x 'lnb 1' type=univresal",
       "error: \"type=univresal\": \"univresal\" is no value for type; the nearest is \"Universal\"; it "
       "takes 0 to 3, or "},
      {"set @base.bin -o @x 'lnb 1' type=9",
       "error: \"type=9\": \"9\" is no value for type; it takes 0 to 3, "},
      {"set @base.bin -o @x 'satellite 1' angle=9999",
       "error: \"angle=9999\": \"9999\" is no value for angle; it takes 0 to 4095 (tenths of a degree), or "
       "degrees with their side (19.2E)\n"},
      {"set @base.bin -o @x 'satellite 1' east=5",
       "error: \"east=5\": \"5\" is no value for east; it takes 0 to 1, or West, East\n"},
      {"set @base.bin -o @x 'satellite 1' lnb_index=16",
       "error: \"lnb_index=16\": \"16\" is no value for lnb_index; it takes 0 to 15, or LNB1 to LNB16\n"},
      {"set @base.bin -o @x 'ubi 1' lock_code=",
       "error: \"lock_code=\": \"\" is no value for lock_code; it takes 1 to 4 characters, or 8 "},
  };
  for (const auto& [line, text] : rows) {
    const ProgramResult result = Vexa(line);
    EXPECT_EQ(result.status, 2) << line;
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, testing::StartsWith(text)) << line;
  }
}

TEST_F(Usage, TheWrongWordAndTheNearestRightOneAreNamed) {
  const std::pair<const char*, const char*> rows[] = {
      {"exprot @base.bin -o @x", "error: \"exprot\" is no command of vexa; the nearest is \"export\"\n"},
      {"--yess", "error: \"--yess\" is no option of vexa; the nearest is \"--yes\"\n"},
      {"export --frmat=csv", "error: \"--frmat\" is no option of vexa export; the nearest is \"--format\"\n"},
      {"adb biuld", "error: \"biuld\" is no command of vexa adb; the nearest is \"build\"\n"},
      {"check @base.bin --dup",
       "error: \"--dup\" is no option of vexa check; the nearest is \"--duplicates\"\n"},
      {"check @base.bin -j", "error: \"-j\" is no option of vexa check; the nearest is \"-h\"\n"},
      {"upload urt @x --port @y --baud 12345",
       "error: --baud: \"12345\" is no value of it; the nearest is \"14400\"\n"},
      {"upload urt @x --port @y --stop-bits 1.75",
       "error: --stop-bits: \"1.75\" is no value of it; the nearest is \"1.5\"\n"},
      {"upload", "error: vexa upload needs one of its commands: adb, sdb, urt\n"},
      {"verify", "error: vexa verify needs one of its commands: adb\n"},
      {"", "error: vexa needs one of its commands: info, check, "},
      {"info @base.bin more", "error: \"more\" is one word too many for vexa info\n"},
      {"export @base.bin -o @x --format jsno",
       "error: --format: \"jsno\" is no value of it; the nearest is \"json\"\n"},
      {"export @base.bin", "error: --output is required\n"},
      {"export @base.bin -o @x --code-page windows-1225",
       "error: --code-page: \"windows-1225\" is no code page: "},
      {"sort @base.bin -o @x --satellites name,Angel",
       "error: --satellites: \"Angel\" is no key of this list; the nearest is \"angle\"\n"},
      {"sort @base.bin -o @x --carriers freq",
       "error: --carriers: \"freq\" is no key of this list; the nearest is \"frequency\"\n"},
      {"import @r.json -o @x --format json --services tv --stream",
       "error: --services: a csv or json document takes no option of lists\n"},
      {"import @r.csv -o @x --format csv --work-dir @work",
       "error: --work-dir: a csv or json document takes no option of lists\n"},
      {"save @base.bin -o @x --initials abcd",
       "error: --initials: \"abcd\" has more than three characters\n"},
      {"upload urt @x --port ''", "error: --port: \"\" names no port\n"},
      {"loader --link ''", "error: --link: \"\" names no line\n"},
      {"upload adb @base.bin --port @y --backup ''",
       "error: --backup: \"\" names nothing; leave the option out\n"},
      {"upload adb @base.bin --port @y --log ''", "error: --log: \"\" names nothing"},
      {"ecf show ''", "error: FILE: \"\" names nothing"},
      {"loader --link @x --seed 18446744073709551616",
       "error: --seed: \"18446744073709551616\" is no number from 0 to 18446744073709551615\n"},
      {"loader --link @x --seed -1", "error: --seed: \"-1\" is no number\n"},
      {"loader --link @base.bin --nak 0.5x", "error: --nak: \"0.5x\" is no probability from 0 to 1\n"},
      {"loader --link @base.bin --nak x", "error: --nak: \"x\" is no probability from 0 to 1\n"},
      {"loader --link @base.bin --nak 1e-999", "error: --nak: \"1e-999\" is no probability from 0 to 1\n"},
      {"loader --link @base.bin --nak -0.1", "error: --nak: \"-0.1\" is no probability from 0 to 1\n"},
      {"loader --link @base.bin --nak 1.1", "error: --nak: \"1.1\" is no probability from 0 to 1\n"},
  };
  for (const auto& [line, text] : rows) {
    const ProgramResult result = Vexa(line);
    EXPECT_EQ(result.status, 2) << line;
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, testing::StartsWith(text)) << line;
  }
  EXPECT_THAT(Vexa("save --help").output,
              testing::HasSubstr("Compress each SDB and the user box records (default: as read)"));
}

TEST_F(Usage, InfoTellsWhatIsCompressed) {
  for (const std::string bin : {"on", "off"}) {
    for (const std::string sdb : {"on", "off"}) {
      ASSERT_EQ(Vexa("save @base.bin -o @x --compress-bin " + bin + " --compress-sdb " + sdb).status, 0);
      const auto info = nlohmann::json::parse(Vexa("info @x --json").output);
      EXPECT_EQ(info["compressed"], bin == "on" ? 1 : 0) << bin << sdb;
      EXPECT_EQ(info["sdbs"][0]["compressed"], sdb == "on" ? 1 : 0) << bin << sdb;
    }
  }
}

// The line of progress gives way to a message, once.
// The cursor stands at the start of the line, where the echo of a Ctrl+C does not push it up.
TEST(Errors, StandBelowNoRestsOfALine) {
  ErrorStream errors;
  testing::internal::CaptureStderr();
  errors.Print("a\n");
  errors.ShowLine("12345");
  errors.ShowLine("123456");
  errors.ShowLine("1");
  errors.Print("b\n");
  errors.Print("c\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "a\n\r12345\r\r123456\r\r      \r\r1\r\r \rb\nc\n");
}

TEST_F(Usage, ListsOfNumbersHoldNothingElse) {
  const std::pair<const char*, const char*> options[] = {
      {"save @base.bin -o @x", "--sdb"},         {"save @base.bin -o @x", "--ubi"},
      {"save @base.bin -o @x", "--satellites"},  {"sort @base.bin -o @x", "--sdb"},
      {"import @x -o @y", "--satellites"},       {"upload sdb @base.bin --port x", "--sdb"},
      {"upload sdb @base.bin --port x", "--ubi"}};
  for (const auto& [line, option] : options) {
    for (const std::string list : {"x", "0", "1-", "2-1", "1,", "1;2"}) {
      const ProgramResult result = Vexa(std::string(line) + " " + option + " '" + list + "'");
      EXPECT_EQ(result.status, 2) << line << option << list;
      EXPECT_THAT(result.errors, testing::StartsWith(std::string("error: ") + option + ": \"" + list +
                                                     "\" is no list of numbers\n"));
    }
  }
}

// The largest seed is one.
TEST_F(Usage, SeedsHave64Bits) {
  for (const char* seed : {"18446744073709551615", "0xFFFFFFFFFFFFFFFF", "0"})
    EXPECT_EQ(Vexa(std::string("loader --link @base.bin --seed ") + seed).status, 1) << seed;
}

TEST_F(Usage, SoftwareVersionsHaveEightAndFourBits) {
  const std::string line = "adb request -o @x --software ";
  EXPECT_EQ(Vexa(line + "255.15").status, 0);
  for (const std::string version : {"256.0", "1.16", "1.99", "1", "-1.0", "1.", ""})
    EXPECT_EQ(Vexa(line + "'" + version + "'").status, 2) << version;
  EXPECT_THAT(Vexa(line + "1.16").errors, HasSubstr("from 0.0 to 255.15"));
}

TEST_F(Usage, VersionAndHelpAreResults) {
  const ProgramResult version = Vexa("--version");
  EXPECT_EQ(version.status, 0);
  EXPECT_THAT(version.output, testing::StartsWith("vexa " VEXA_VERSION "\nzlib "));
  EXPECT_EQ(version.errors, "");
  for (const std::string command :
       {"info",     "check",    "save",       "sort",       "export",      "import",     "merge",
        "set",      "ecf show", "ecf build",  "adb build",  "adb request", "adb decode", "urt build",
        "urt show", "ports",    "upload adb", "upload sdb", "upload urt",  "download",   "loader"}) {
    const ProgramResult help = Vexa(command + " --help");
    EXPECT_EQ(help.status, 0);
    // Every option that may be left out tells what holds then.
    std::istringstream words(help.output);
    std::string entry;
    size_t options = 0, told = 0;
    for (std::string text; std::getline(words, text);) {
      const bool option =
          text.starts_with("  -") && text.find("--help") == text.npos && text.find("REQUIRED") == text.npos;
      options += option ? 1 : 0;
      told += text.find("default") != text.npos && text.find("REQUIRED") == text.npos ? 1 : 0;
    }
    EXPECT_GE(told, options) << command << help.output;
    // One that must be given has no default, however its value is kept.
    for (const char* kept : {"=0 REQUIRED", "=[]"}) EXPECT_THAT(help.output, Not(HasSubstr(kept))) << command;
    EXPECT_EQ(help.output.find('\0'), std::string::npos) << command;
  }
  EXPECT_THAT(Vexa("download --help").output, HasSubstr("(default: 115200)"));
}

TEST_F(Usage, TheEnvironmentNamesTheConfiguration) {
  const std::string shipped = Vexa("ecf show").output;
  EXPECT_THAT(shipped, testing::StartsWith("0: manufacturer"));
  // A configuration of one product, which the shipped one does not hold.
  PutFile(At("own.ecf"), MakeEcf({{.id = 0x77}}));
  SetEnvironment("VEXA_ECF", In("own.ecf"));
  const ProgramResult named = Vexa("ecf show"), given = Vexa("ecf show @own.ecf");
  SetEnvironment("VEXA_ECF", In("none.ecf"));
  const ProgramResult missing = Vexa("adb request -o @request");
  SetEnvironment("VEXA_ECF", "");
  EXPECT_EQ(named.output, given.output);
  EXPECT_NE(named.output, shipped);
  EXPECT_EQ(missing.status, 1);
  EXPECT_THAT(missing.errors, HasSubstr("VEXA_ECF names \"" + In("none.ecf") +
                                        "\", where no configuration file is.\ninfo: Set VEXA_ECF"));
  EXPECT_EQ(Vexa("ecf show").output, shipped);
}

TEST_F(Usage, OnlyAnImageWithAHeaderIsCompressed) {
  const std::string urt =
      "urt build @image.bin -o @x --kind 3 --name N --start 0 --end 0x1000 --compress zlib:6";
  for (const std::string kind : {" --type 3 --flag 0", " --type 3 --flag 1", " --type 0 --flag 1"})
    EXPECT_EQ(Vexa(urt + kind).status, 2) << kind;
  for (const std::string kind : {" --type 0 --flag 0", " --type 4 --flag 1"})
    EXPECT_EQ(Vexa(urt + kind).status, 0) << kind;
}

TEST_F(Usage, ImagesAppearAllOrNone) {
  std::filesystem::create_directories(At("out/~001e2p.urt"));  // the last of four cannot be written
  Put("out/~001adb.bin", "old");
  EXPECT_EQ(Vexa("adb build @base.bin -o @out --select 0/0/1").status, 1);
  EXPECT_EQ(Get("out/~001adb.bin"), BytesOf("old"));
  EXPECT_FALSE(Exists("out/~001adb.urt"));
  std::filesystem::remove(At("out/~001e2p.urt"));
  EXPECT_EQ(Vexa("adb build @base.bin -o @out --select 0/0/1").status, 0);
  EXPECT_TRUE(Exists("out/~001e2p.urt"));
}

}  // namespace
}  // namespace vexa
