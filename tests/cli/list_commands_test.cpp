#include <nlohmann/json.hpp>

#include "import/build_bin.h"
#include "import/import_command.h"
#include "import/text_export.h"
#include "tests/cli/cli_test.h"
#include "tests/support/data_folder.h"
#include "tests/support/list_maker.h"
#include "view/report_page.h"

namespace vexa {
namespace {

std::string ThreeSatellites() {
  return SdxList({{},
                  {.type = "R", .frequency = "004000", .position = "0130"},
                  {.frequency = "012000", .position = "0130", .video = "0500", .access = "C_0A"},
                  {.frequency = "012500", .position = "0070"}});
}

struct ListCommands : CliTest {
  ListCommands() { Put("list.sdx", ThreeSatellites()); }
};

TEST_F(ListCommands, ContainerIsWhatSavingTheImportedDatabaseGives) {
  for (const std::string name : {"sample.sdx", "sample.dvb", "sample.dat"}) {
    const Path list = DataFolder() / name;
    EXPECT_EQ(RunVexa({"import", Utf8FromPath(list), "-o", In("out.bin")}).status, 0) << name;
    WorkRecords work;
    ASSERT_TRUE(ImportListFile(recorder.context, list, {}, {}, work)) << name;
    Document expected;
    ASSERT_TRUE(OpenWorkRecords(recorder.context, work, {}, expected));
    EXPECT_EQ(Get("out.bin"), BuildBin(recorder.context, expected, {}, {})) << name;
    EXPECT_LT(Get("out.bin").size(), kMaximumBinSize);
    EXPECT_EQ(RunVexa({"import", Utf8FromPath(list), "--stream", "-o", In("out.sdb")}).status, 0) << name;
    EXPECT_EQ(Get("out.sdb"), BuildBinFromWorkFiles(work, {})) << name;
    EXPECT_GT(Open("out.sdb").sdbs[0].database->services.size(), 100u);
  }
}

TEST_F(ListCommands, FilterMode) {
  const struct {
    std::string options;
    size_t satellites, carriers, services;
  } cases[] = {
      {"", 3, 4, 4},
      {"--satellites all", 3, 4, 4},
      {"--satellites 2-3", 2, 3, 3},
      {"--carriers c", 3, 1, 1},
      {"--carriers c,ku", 3, 4, 4},
      {"--satellites 2 --carriers ku", 1, 1, 1},
      {"--services radio", 3, 4, 1},  // all carriers stay
      {"--carriers ku --services scrambled", 3, 3, 1},
      {"--services fta,tv", 3, 4, 4},
      {"--carriers horizontal", 3, 0, 0},
  };
  for (const auto& c : cases) {
    const ProgramResult result = Vexa("import @list.sdx --stream -o @out.sdb --work-dir @work " + c.options);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output + result.errors, "");
    const Document document = Open("out.sdb");
    const StaticDatabase& database = *document.sdbs[0].database;
    EXPECT_EQ(std::tuple(database.satellites.size(), database.carriers.size(), database.services.size()),
              std::tuple(c.satellites, c.carriers, c.services))
        << c.options;
    EXPECT_EQ(std::tuple(Get("work/~001sat.bin").size(), Get("work/~001car.bin").size(),
                         Get("work/~001ser.bin").size()),
              std::tuple(28 * c.satellites, 36 * c.carriers, 32 * c.services))
        << c.options;
  }
}

// Two records of a television's list: what is read by default stays as it is, and is warned of.
TEST_F(ListCommands, LayoutsOfSatcodxLists) {
  std::string record = SdxText({.version = "05", .name = "Das Erst"});
  record[7] = '1';
  record.replace(115, 13, "e HD         ").append(4, ' ');
  Put("tv.sdx", record + record);
  const auto services = [&](const std::string& options, const std::string& errors) {
    const ProgramResult result = Vexa("import @tv.sdx --stream -o @out.sdb " + options);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, errors) << options;
    const Document document = Open("out.sdb");
    std::string names;
    for (const auto& service : document.sdbs[0].database->services)
      names += std::string(NameOf(service->record.name)) + ' ';
    return names;
  };
  const std::string warning = "warning: " + In("tv.sdx") +
                              " does not look as lists of its format do: its version is 105."
                              " --layout auto reads it by what it shows.\n";
  EXPECT_EQ(services("", warning), "Das Erst ");
  EXPECT_EQ(services("--layout default", warning), "Das Erst ");
  for (const char* options : {"--layout auto", "--layout 105", "--layout 105 --record-length 0x84"})
    EXPECT_EQ(services(options, ""), "Das Erste HD ") << options;
  Put("tv.sdx", "\xEF\xBB\xBF" + record + "\r\n" + record + "\r\n");
  EXPECT_EQ(services("--layout auto", ""), "Das Erste HD ");
  EXPECT_TRUE(
      Vexa("import @tv.sdx --stream -o @out.sdb")
          .errors.starts_with("warning: " + In("tv.sdx") +
                              " does not look as lists of its format do: a byte-order mark stands before "
                              "its first record. --layout auto reads it by what it shows.\n"
                              "error: Error - Invalid File\n"));
  for (const char* options : {"@tv.sdx --layout c", "@tv.sdx --record-length 126", "@tv.dat --layout a"})
    EXPECT_EQ(Vexa("import -o @out.sdb " + std::string(options)).status, 2) << options;
}

// What is left out is told line by line, whatever else is done with the list.
TEST_F(ListCommands, ListsOfOtherReceivers) {
  Put("channels.conf",
      "A\xC5\x81:11778:HC34:S19.2E:27500:1:2:0:0:1\nB:11778:HS1:S13E:1:2:2:0:0:1\n"
      "C:11778:HC34:S19.2E:27500:0:2:0:0:2\nx\n");
  const std::string notes = "warning: 1 lines cannot be read, the first is line 4\n",
                    s2 = "info: 1 DVB-S2 carriers left out\n",
                    lacks = "info: 1 characters that Windows-1252 lacks became \"?\"\n";
  const auto imported = [&](const std::string& options, const std::string& errors, size_t satellites) {
    const ProgramResult result = Vexa("import @channels.conf --stream -o @out.sdb " + options);
    EXPECT_EQ(result.status, 0) << options;
    EXPECT_EQ(result.errors, errors) << options;
    EXPECT_EQ(Open("out.sdb").sdbs[0].database->satellites.size(), satellites) << options;
  };
  imported("", notes + s2 + lacks, 1);
  imported("--services tv", notes + s2 + lacks, 1);
  imported("--format vdr --keep-s2 --code-page iso8859-2", notes, 2);
  imported("--list-code-page windows-1250", notes + s2 + lacks, 1);
  EXPECT_EQ(Vexa("import @list.sdx -o @old.bin --sides").status, 0);
  const ProgramResult like = Vexa("sort --like @channels.conf @old.bin -o @sorted.bin");
  EXPECT_EQ(like.status, 0);
  EXPECT_THAT(like.errors, testing::StartsWith(notes + s2 + lacks + "info: 1 of 3 satellites, "));
  for (const char* line : {"import @list.sdx --keep-s2 -o @x", "import @a.json --keep-s2 -o @x",
                           "import @a.csv --list-code-page cp437 -o @x", "merge vdr @a @b -o @x"})
    EXPECT_EQ(Vexa(line).status, 2) << line;
  EXPECT_EQ(Vexa("import @list.sdx --format lamedb -o @x").errors,
            "error: Invalid or unsupported lamedb file format.\ninfo: " + In("list.sdx") +
                ": It is no list of this format. Choose another file, or say the format that it has.\n");
}

// A list that is completed has only the faults of its own.
TEST_F(ListCommands, CompletedImports) {
  EXPECT_EQ(Vexa("import @list.sdx -o @plain.bin").status, 0);
  const ProgramResult result =
      Vexa("import @list.sdx -o @out.bin --number-positions --lnb-by-band --sides --work-dir @work");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "warning: East or West of 1 satellites is not known, the first is satellite 3\n");
  EXPECT_EQ(Vexa("diff @plain.bin @out.bin").output,
            "~ SDB1 LNB 1: frequency1 9750 -> 5150, frequency2 10600 -> 0, type 2 -> 0\n"
            "~ SDB1 satellite 1 ASTRA 1___________: lnb_index 0 -> 1, position 255 -> 1, east 0 -> 1\n"
            "~ SDB1 satellite 2 ASTRA 1___________: position 255 -> 2, east 0 -> 1\n"
            "~ SDB1 satellite 3 ASTRA 1___________: lnb_index 0 -> 1, position 255 -> 3\n");
  EXPECT_EQ(Vexa("import @list.sdx -o @x --stream --sides").status, 2);
  EXPECT_EQ(Vexa("import @a.json -o @x --lnb-by-band").status, 2);
}

struct RefusalCase {
  std::string line;
  int status;
  const char* error;
};

void ExpectRefusal(const RefusalCase& c, const ProgramResult& result) {
  EXPECT_EQ(result.status, c.status) << c.line;
  EXPECT_EQ(result.output, "") << c.line;
  EXPECT_NE(result.errors, "") << c.line;
  if (c.error) {
    EXPECT_THAT(result.errors, testing::StartsWith(c.error)) << c.line;
  }
}

TEST_F(ListCommands, ImportRefusals) {
  std::string many;
  for (int i = 1; i <= 86; ++i) many += SdxText({.position = Format("%04d", i)});
  Put("long.sdx", many);
  Put("wrong.sdx", "DVSO");
  Put("empty.sdx", "SATCODX");
  Put("out.bin", "old");
  const RefusalCase cases[] = {
      {"@none.sdx -o @out.bin", 1, "error: Unable to open the given file.\ninfo: "},
      {"@wrong.sdx -o @out.bin", 1, "error: Error - Invalid File\ninfo: "},
      {"@long.sdx -o @out.bin", 1, "error: Satellite records exceed the limit. Can not add.\ninfo: "},
      {"@empty.sdx -o @out.bin --work-dir @work", 1, nullptr},
      {"@list.sdx -o @out.bin --satellites 4", 1, nullptr},
      {"@list.sdx -o @out.bin --satellites x", 2, nullptr},
      {"@list.sdx -o @out.bin --carriers ka", 2, nullptr},
      {"@list.sdx -o @out.bin --services none", 2, nullptr},
      {"@list.sdx", 2, nullptr},
      {"@list.sdx -o @none/out.bin", 1, nullptr},
      {"@list.sdx --stream -o @none/out.bin", 1, nullptr},
  };
  for (const RefusalCase& c : cases) {
    ExpectRefusal(c, Vexa("import " + c.line));
    EXPECT_EQ(Get("out.bin"), BytesOf("old")) << c.line;
  }
  EXPECT_FALSE(Exists("work"));
  // The bare stream is written all the same.
  EXPECT_EQ(Vexa("import @empty.sdx --stream -o @out.bin").status, 0);
  EXPECT_EQ(Get("out.bin"), BuildBinFromWorkFiles({}, {}));
}

TEST_F(ListCommands, DatabaseAboveTheSizeLimitIsWrittenWithStatusOne) {
  std::string list;
  for (int i = 0; i < 4000; ++i) list += SdxText({.video = Format("%04d", i + 1)});
  Put("large.sdx", list);
  const ProgramResult result = Vexa("import @large.sdx -o @out.bin");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors,
              testing::StartsWith(
                  "error: File size exceeds the limit. Can not continue.\ninfo: " + In("out.bin") + ": "));
  EXPECT_EQ(Open("out.bin").sdbs[0].database->services.size(), 4000u);
}

TEST_F(ListCommands, FailedImportTakesItsWorkFilesBack) {
  std::filesystem::create_directory(At("old"));
  Put("old/~001car.bin", "carriers");
  Put("old/other", "other");
  for (const std::string stream : {"", " --stream"}) {
    EXPECT_EQ(Vexa("import @list.sdx -o @none/out.bin --work-dir @new/inner" + stream).status, 1);
    EXPECT_FALSE(Exists("new")) << stream;
    EXPECT_EQ(Vexa("import @list.sdx -o @none/out.bin --work-dir @old" + stream).status, 1);
    EXPECT_EQ(Get("old/~001car.bin"), BytesOf("carriers")) << stream;
    EXPECT_EQ(Get("old/other"), BytesOf("other")) << stream;
    EXPECT_FALSE(Exists("old/~001sat.bin") || Exists("old/~001ser.bin")) << stream;
  }
  // A link that leads nowhere cannot be read, and stays as it is.
  std::error_code error;
  std::filesystem::create_symlink(At("gone"), At("old/~001sat.bin"), error);
  EXPECT_EQ(Vexa("import @list.sdx -o @none/out.bin --work-dir @old").status, 1);
  EXPECT_TRUE(error || std::filesystem::is_symlink(At("old/~001sat.bin")));
  EXPECT_FALSE(Exists("gone"));
  std::filesystem::remove(At("old/~001sat.bin"));
  // The third file cannot be made: neither the first two nor the output are.
  std::filesystem::create_directories(At("old/~001ser.bin"));
  EXPECT_EQ(Vexa("import @list.sdx -o @out.bin --work-dir @old").status, 1);
  EXPECT_FALSE(Exists("out.bin") || Exists("old/~001sat.bin"));
  EXPECT_EQ(Get("old/~001car.bin"), BytesOf("carriers"));
}

TEST_F(ListCommands, Merge) {
  std::filesystem::create_directory(At("dir"));
  Put("a.sdx", "SATCODX_03A");
  Put("b.sdx", "SATCODX_02B");
  Put("dir/B.sdx", "SATCODX_04C");
  Put("dir/a.SDX", "D");
  const ProgramResult result = Vexa("merge satcodx @b.sdx @a.sdx --folder @dir -o @out.sdx");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "info: " + In("out.sdx") + " \n file is generated successfully.\n");
  EXPECT_EQ(Get("out.sdx"), BytesOf("SATCODX_02BSATCODX_03ADSATCODX_04C"));
}

TEST_F(ListCommands, MergeRefusals) {
  Put("a.sdx", "SATCODX_03A");
  Put("old.sdx", "SATCODX_04");
  Put("out", "old");
  const RefusalCase cases[] = {
      {"satcodx @a.sdx -o @out", 1, "warning: Select atleast two files.\n"},
      {"satcodx @a.sdx @a.sdx -o @out", 1, "error: Duplication of files not allowed.\n"},
      {"satcodx @a.sdx @old.sdx -o @out", 1,
       "error: SatcoDX Merger allows only SatcoDX Protocol Version 2 and 3.\n"
       "Please download latest SatcoDX ( SDX ) file from website\n"},
      {"dvb2000 @a.sdx @none -o @out", 1, "error: Unable to open the given file.\ninfo: "},
      {"lyngsat @a.sdx @old.sdx --folder @. -o @out", 1, "error: No Lyngsat ( DAT ) file found.\n"},
      {"dvb2000 @a.sdx @out -o @./out", 2, "error: --output: "},
      {"other @a.sdx @old.sdx -o @out", 2, nullptr},
      {"lyngsat @a.sdx @old.sdx", 2, nullptr},
  };
  for (const RefusalCase& c : cases) {
    ExpectRefusal(c, Vexa("merge " + c.line));
    EXPECT_EQ(Get("out"), BytesOf("old"));
  }
}

struct ExportCommand : CliTest {
  // db.bin: names that need quoting and encoding, a favourite list and a running order of its own.
  ExportCommand() {
    Put("list.sdx", ThreeSatellites());
    EXPECT_EQ(Vexa("import @list.sdx -o @plain.bin").status, 0);
    document = Open("plain.bin");
    StaticDatabase& database = *document.sdbs[0].database;
    SetName(database.services[0]->record.name, "A,\"\xE9\"\n");
    std::swap(database.service_order[0], database.service_order[3]);
    database.favourites[1].tv = {database.services[2], database.services[0]};
    Save(document, "db.bin");
  }
  Document document;
};

TEST_F(ExportCommand, Text) {
  EXPECT_EQ(Vexa("export @db.bin -o @report.txt").status, 0);
  const Bytes report = BytesOf(DatabaseReport(*document.sdbs[0].database));
  EXPECT_EQ(Get("report.txt"), report);
  Put("empty.sdx", "SATCODX");
  EXPECT_EQ(Vexa("import @empty.sdx --stream -o @empty.bin").status, 0);
  ExpectRefusal({"no record", 1, "error: There is no information to export\n"},
                Vexa("export @empty.bin -o @report.txt"));
  EXPECT_EQ(Vexa("export @db.bin --sdb 2 -o @report.txt").status, 1);
  EXPECT_EQ(Vexa("export @db.bin --format xml -o @report.txt").status, 2);
  EXPECT_EQ(Get("report.txt"), report);
}

TEST_F(ExportCommand, Page) {
  OpenSdb& second = *AppendSdb(document, "SDB2");
  AddTestSatellite(*second.database, "\xE9<");
  second.database->lnb_count = 1;
  Save(document, "two.bin");
  EXPECT_EQ(Vexa("export @two.bin --format html --sdb 2 --code-page iso-8859-5 -o @page.html").status, 0);
  const std::string expected = ReportPage(Open("two.bin"), 1, *FindCodePage("ISO 8859-5"));
  EXPECT_EQ(Get("page.html"), BytesOf(expected));
  EXPECT_THAT(expected, testing::HasSubstr("<td>\xD1\x89&lt;</td>"));
  ExpectRefusal({"no record", 1, "error: There is no information to export\n"}, [&] {
    Put("empty.sdx", "SATCODX");
    EXPECT_EQ(Vexa("import @empty.sdx --stream -o @empty.bin").status, 0);
    return Vexa("export @empty.bin --format html -o @page.html");
  }());
}

TEST_F(ExportCommand, Json) {
  EXPECT_EQ(Vexa("export @db.bin --format json -o @db.json").status, 0);
  const auto root = nlohmann::json::parse(Get("db.json"));
  EXPECT_EQ(root["name"], "SDB1");
  EXPECT_EQ(root["lnbs"].size(), 16u);
  EXPECT_EQ(root["lnbs"][0]["frequency2"], 10600);
  EXPECT_EQ(root["satellites"].size(), 85u);
  EXPECT_EQ(root["satellites"][1]["angle"], 130);
  EXPECT_EQ(root["satellites"][1]["carriers"][1]["frequency"], 12000);
  const auto service = root["satellites"][0]["carriers"][0]["services"][0];
  EXPECT_EQ(service["name"], "A,\"\xC3\xA9\"\n");
  EXPECT_EQ(service["number"], 1);
  EXPECT_EQ(service["order"], 4);
  EXPECT_EQ(service["program_number"], 28724);
  EXPECT_EQ(root["favourites"].size(), 8u);
  EXPECT_EQ(root["favourites"][1]["tv"], nlohmann::json::parse("[3, 1]"));
  EXPECT_EQ(root["favourites"][1]["radio_name"], "Favourite2");
}

TEST_F(ExportCommand, Csv) {
  EXPECT_EQ(Vexa("export @db.bin --format csv -o @db.csv").status, 0);
  const Bytes bytes = Get("db.csv");
  const std::string text(bytes.begin(), bytes.end());
  EXPECT_THAT(text, testing::StartsWith("record,lnb,frequency1,frequency2,type,power,"));
  EXPECT_THAT(text, testing::HasSubstr("\"A,\"\"\xC3\xA9\"\"\n\""));
  // Every row has the header's number of cells; quoted text is one cell.
  size_t cells = 1, columns = 0, rows = 0;
  bool quoted = false;
  for (const char c : text) {
    if (c == '"') quoted = !quoted;
    if (quoted) continue;
    if (c == ',') ++cells;
    if (c != '\n') continue;
    if (rows++ == 0) columns = cells;
    EXPECT_EQ(cells, columns) << "row " << rows;
    cells = 1;
  }
  // Header, 16 LNBs, 85 satellites, 4 carriers, 4 services, 8 groups, 2 entries.
  EXPECT_EQ(rows, 1u + 16 + 85 + 4 + 4 + 8 + 2);
}

}  // namespace
}  // namespace vexa
