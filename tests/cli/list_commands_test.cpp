#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "core/bin_file.h"
#include "import/build_bin.h"
#include "import/import_command.h"
#include "import/satcodx.h"
#include "import/text_export.h"
#include "tests/support/data_folder.h"
#include "tests/support/list_maker.h"
#include "tests/support/recorder.h"
#include "tests/support/run_vexa.h"

namespace vexa {
namespace {

using Arguments = std::vector<std::string>;

struct ListCommands : testing::Test {
  Recorder recorder;
  Path folder = recorder.context.temporary_folder;
  std::string In(const std::string& name) { return Utf8FromPath(folder / PathFromUtf8(name)); }
  std::string Put(const std::string& name, const std::string& content) {
    PutFile(folder / PathFromUtf8(name), BytesOf(content));
    return In(name);
  }
  Bytes Get(const std::string& name) { return ReadWholeFile(folder / PathFromUtf8(name)).value_or(Bytes{}); }
  bool Exists(const std::string& name) { return std::filesystem::exists(folder / PathFromUtf8(name)); }
  StaticDatabase& Open(const std::string& name) {
    document = {};
    EXPECT_TRUE(OpenBin(recorder.context, folder / PathFromUtf8(name), document)) << name;
    return *document.sdbs.at(0).database;
  }
  Document document;
};

std::string ThreeSatellites() {
  std::vector<SdxRecord> records(4);
  records[1].position = "0130";
  records[1].frequency = "004000";
  records[1].type = "R";
  records[2].position = "0130";
  records[2].frequency = "012000";
  records[2].video = "0500";
  records[2].access = "C_0A";
  records[3].position = "0070";
  records[3].frequency = "012500";
  return SdxList(records);
}

TEST_F(ListCommands, ContainerIsWhatSavingTheImportedDatabaseGives) {
  for (const std::string name : {"sample.sdx", "sample.dvb", "sample.dat"}) {
    const Path list = DataFolder() / name;
    EXPECT_EQ(RunVexa({"import", Utf8FromPath(list), "-o", In("out.bin")}).status, 0) << name;
    WorkFiles work;
    const auto format = CheckListFile(recorder.context, list);
    ASSERT_TRUE(format && ReadList(recorder.context, list, *format, {}, work)) << name;
    Document expected;
    ASSERT_TRUE(OpenWorkFiles(recorder.context, work, {}, expected));
    EXPECT_EQ(Get("out.bin"), BuildBin(recorder.context, expected, {}, {})) << name;
    EXPECT_LT(Get("out.bin").size(), kMaximumBinSize);
    EXPECT_EQ(RunVexa({"import", Utf8FromPath(list), "--stream", "-o", In("out.sdb")}).status, 0) << name;
    EXPECT_EQ(Get("out.sdb"), BuildBinFromWorkFiles(work, {})) << name;
    EXPECT_GT(Open("out.sdb").services.size(), 100u);
  }
}

struct FilterCase {
  Arguments options;
  size_t satellites, carriers, services;
};

TEST_F(ListCommands, FilterMode) {
  const std::string list = Put("list.sdx", ThreeSatellites());
  const FilterCase cases[] = {
      {{}, 3, 4, 4},
      {{"--satellites", "all"}, 3, 4, 4},
      {{"--satellites", "2-3"}, 2, 3, 3},
      {{"--carriers", "c"}, 3, 1, 1},
      {{"--carriers", "c,ku"}, 3, 4, 4},
      {{"--satellites", "2", "--carriers", "ku"}, 1, 1, 1},
      {{"--services", "radio"}, 3, 4, 1},  // all carriers stay
      {{"--carriers", "ku", "--services", "scrambled"}, 3, 3, 1},
      {{"--services", "fta,tv"}, 3, 4, 4},
      {{"--carriers", "horizontal"}, 3, 0, 0},
  };
  for (const FilterCase& c : cases) {
    Arguments arguments = {"import", list, "--stream", "-o", In("out.sdb"), "--work-dir", In("work")};
    arguments.insert(arguments.end(), c.options.begin(), c.options.end());
    const ProgramResult result = RunVexa(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output + result.errors, "");
    const StaticDatabase& database = Open("out.sdb");
    const std::string name = testing::PrintToString(c.options);
    EXPECT_EQ(database.satellites.size(), c.satellites) << name;
    EXPECT_EQ(database.carriers.size(), c.carriers) << name;
    EXPECT_EQ(database.services.size(), c.services) << name;
    EXPECT_EQ(Get("work/~001sat.bin").size(), 28 * c.satellites) << name;
    EXPECT_EQ(Get("work/~001car.bin").size(), 36 * c.carriers) << name;
    EXPECT_EQ(Get("work/~001ser.bin").size(), 32 * c.services) << name;
  }
}

struct RefusalCase {
  Arguments arguments;
  int status;
  const char* error;
};

TEST_F(ListCommands, ImportRefusals) {
  const std::string list = Put("list.sdx", ThreeSatellites()), empty = Put("empty.sdx", "SATCODX");
  std::string many;
  for (int i = 1; i <= 86; ++i) {
    SdxRecord record;
    record.position = Format("%04d", i);
    many += SdxText(record);
  }
  const std::string long_list = Put("long.sdx", many), wrong = Put("wrong.sdx", "DVSO");
  const std::string out = Put("out.bin", "old");
  const RefusalCase cases[] = {
      {{"import", In("none.sdx"), "-o", out}, 1, "error: Unable to open the given file.\n"},
      {{"import", wrong, "-o", out}, 1, "error: Error - Invalid File\n"},
      {{"import", long_list, "-o", out}, 1, "error: Satellite records exceed the limit. Can not add.\n"},
      {{"import", empty, "-o", out, "--work-dir", In("work")}, 1, nullptr},
      {{"import", list, "-o", out, "--satellites", "4"}, 1, nullptr},
      {{"import", list, "-o", out, "--satellites", "x"}, 2, nullptr},
      {{"import", list, "-o", out, "--carriers", "ka"}, 2, nullptr},
      {{"import", list, "-o", out, "--services", "none"}, 2, nullptr},
      {{"import", list}, 2, nullptr},
      {{"import", list, "-o", In("none/out.bin")}, 1, nullptr},
      {{"import", list, "--stream", "-o", In("none/out.bin")}, 1, nullptr},
  };
  for (const RefusalCase& c : cases) {
    const ProgramResult result = RunVexa(c.arguments);
    const std::string name = testing::PrintToString(c.arguments);
    EXPECT_EQ(result.status, c.status) << name;
    EXPECT_EQ(result.output, "") << name;
    EXPECT_NE(result.errors, "") << name;
    if (c.error) {
      EXPECT_EQ(result.errors, c.error) << name;
    }
    EXPECT_EQ(Get("out.bin"), BytesOf("old")) << name;
  }
  EXPECT_FALSE(Exists("work"));
  // The bare stream is written all the same.
  EXPECT_EQ(RunVexa({"import", empty, "--stream", "-o", out}).status, 0);
  EXPECT_EQ(Get("out.bin"), BuildBinFromWorkFiles({}, {}));
}

TEST_F(ListCommands, DatabaseAboveTheSizeLimitIsWrittenWithStatusOne) {
  std::string list;
  for (int i = 0; i < 4000; ++i) {
    SdxRecord record;
    record.video = Format("%04d", i + 1);
    list += SdxText(record);
  }
  const ProgramResult result = RunVexa({"import", Put("list.sdx", list), "-o", In("out.bin")});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors, "error: File size exceeds the limit. Can not continue.\n");
  EXPECT_EQ(Open("out.bin").services.size(), 4000u);
}

TEST_F(ListCommands, FailedImportTakesItsWorkFilesBack) {
  const std::string list = Put("list.sdx", ThreeSatellites());
  for (const bool stream : {false, true}) {
    Arguments arguments = {"import", list, "-o", In("none/out.bin"), "--work-dir", In("new/inner")};
    if (stream) arguments.push_back("--stream");
    EXPECT_EQ(RunVexa(arguments).status, 1);
    EXPECT_FALSE(Exists("new")) << stream;

    std::filesystem::create_directory(folder / "old");
    Put("old/~001car.bin", "carriers");
    Put("old/other", "other");
    arguments[5] = In("old");
    EXPECT_EQ(RunVexa(arguments).status, 1);
    EXPECT_EQ(Get("old/~001car.bin"), BytesOf("carriers")) << stream;
    EXPECT_EQ(Get("old/other"), BytesOf("other")) << stream;
    EXPECT_FALSE(Exists("old/~001sat.bin") || Exists("old/~001ser.bin")) << stream;
  }
  // The third file cannot be made: neither the first two nor the output are.
  std::filesystem::create_directories(folder / "old/~001ser.bin");
  EXPECT_EQ(RunVexa({"import", list, "-o", In("out.bin"), "--work-dir", In("old")}).status, 1);
  EXPECT_FALSE(Exists("out.bin") || Exists("old/~001sat.bin"));
  EXPECT_EQ(Get("old/~001car.bin"), BytesOf("carriers"));
}

TEST_F(ListCommands, Merge) {
  Put("a.sdx", "SATCODX_03A");
  Put("b.sdx", "SATCODX_02B");
  std::filesystem::create_directory(folder / "dir");
  Put("dir/B.sdx", "SATCODX_04C");
  Put("dir/a.SDX", "D");
  const ProgramResult result =
      RunVexa({"merge", "satcodx", In("b.sdx"), In("a.sdx"), "--folder", In("dir"), "-o", In("out.sdx")});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "info: " + In("out.sdx") + " \n file is generated successfully.\n");
  EXPECT_EQ(Get("out.sdx"), BytesOf("SATCODX_02BSATCODX_03ADSATCODX_04C"));
}

TEST_F(ListCommands, MergeRefusals) {
  const std::string a = Put("a.sdx", "SATCODX_03A"), old = Put("old.sdx", "SATCODX_04"),
                    out = Put("out", "old");
  const RefusalCase cases[] = {
      {{"merge", "satcodx", a, "-o", out}, 1, "warning: Select atleast two files.\n"},
      {{"merge", "satcodx", a, a, "-o", out}, 1, "error: Duplication of files not allowed.\n"},
      {{"merge", "satcodx", a, old, "-o", out},
       1,
       "error: SatcoDX Merger allows only SatcoDX Protocol Version 2 and 3.\nPlease download latest SatcoDX "
       "( SDX ) "
       "file from website\n"},
      {{"merge", "dvb2000", a, In("none"), "-o", out}, 1, "error: Unable to open the given file.\n"},
      {{"merge", "lyngsat", a, old, "--folder", In("."), "-o", out},
       1,
       "error: No Lyngsat ( DAT ) file found.\n"},
      {{"merge", "dvb2000", a, out, "-o", In("./out")},
       1,
       "error: The merged file cannot be one of the selected files.\n"},
      {{"merge", "other", a, old, "-o", out}, 2, nullptr},
      {{"merge", "lyngsat", a, old}, 2, nullptr},
  };
  for (const RefusalCase& c : cases) {
    const ProgramResult result = RunVexa(c.arguments);
    EXPECT_EQ(result.status, c.status) << testing::PrintToString(c.arguments);
    if (c.error) {
      EXPECT_EQ(result.errors, c.error);
    }
    EXPECT_EQ(Get("out"), BytesOf("old"));
  }
}

TEST_F(ListCommands, ExportText) {
  EXPECT_EQ(RunVexa({"import", Put("list.sdx", ThreeSatellites()), "-o", In("db.bin")}).status, 0);
  EXPECT_EQ(RunVexa({"export", In("db.bin"), "-o", In("report.txt")}).status, 0);
  EXPECT_EQ(Get("report.txt"), BytesOf(DatabaseReport(Open("db.bin"))));
  EXPECT_EQ(RunVexa({"import", Put("empty.sdx", "SATCODX"), "--stream", "-o", In("empty.bin")}).status, 0);
  const ProgramResult refused = RunVexa({"export", In("empty.bin"), "-o", In("report.txt")});
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.errors, "error: There is no information to export\n");
  EXPECT_EQ(Get("report.txt"), BytesOf(DatabaseReport(Open("db.bin"))));
  EXPECT_EQ(RunVexa({"export", In("db.bin"), "--sdb", "2", "-o", In("report.txt")}).status, 1);
  EXPECT_EQ(RunVexa({"export", In("db.bin"), "--format", "xml", "-o", In("report.txt")}).status, 2);
}

// A database whose names need quoting and encoding, with a favourite list and its own running order.
std::string MakeNamedDatabase(ListCommands& test) {
  EXPECT_EQ(RunVexa({"import", test.Put("list.sdx", ThreeSatellites()), "-o", test.In("plain.bin")}).status,
            0);
  StaticDatabase& database = test.Open("plain.bin");
  SetName(database.services[0]->record.name, "A,\"\xE9\"\n");
  std::swap(database.service_order[0], database.service_order[3]);
  database.favourites[1].tv = {database.services[2], database.services[0]};
  EXPECT_TRUE(SaveBin(test.recorder.context, test.document, PathFromUtf8(test.In("db.bin"))));
  return test.In("db.bin");
}

TEST_F(ListCommands, ExportJson) {
  const std::string file = MakeNamedDatabase(*this);
  EXPECT_EQ(RunVexa({"export", file, "--format", "json", "-o", In("db.json")}).status, 0);
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

TEST_F(ListCommands, ExportCsv) {
  const std::string file = MakeNamedDatabase(*this);
  EXPECT_EQ(RunVexa({"export", file, "--format", "csv", "-o", In("db.csv")}).status, 0);
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
