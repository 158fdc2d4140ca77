#include "import/import_command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "import/any_database.h"
#include "import/dvb2000.h"
#include "import/lyngsat.h"
#include "import/satcodx.h"
#include "import/wizard.h"
#include "tests/support/list_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using Texts = std::vector<std::string>;

TEST(ImportCommand, ExtensionAndFirstBytesMustAgree) {
  const struct {
    const char *file, *content;
    std::optional<ListFormat> format;
  } cases[] = {
      {"a.sdx", "SATCODX03", ListFormat::kSatcodx},
      {"a.SDX", "satCODx", ListFormat::kSatcodx},
      {"b.sdx", "SATCOD", std::nullopt},
      {"b.sdx", "", std::nullopt},
      {"a.dvb", "dvso", ListFormat::kDvb2000},
      {"b.dvb", "DVS", std::nullopt},
      {"a.Dat", ":sat \"", ListFormat::kLyngsat},
      {"b.dat", "SATCODX", std::nullopt},
      {"a.txt", "SATCODX", std::nullopt},
      {"sdx", "SATCODX", std::nullopt},
  };
  Recorder recorder;
  const Path& folder = recorder.context.temporary_folder;
  for (const auto& c : cases) {
    PutFile(folder / c.file, BytesOf(c.content));
    EXPECT_EQ(CheckListFile(recorder.context, folder / c.file), c.format) << c.file << ' ' << c.content;
    EXPECT_EQ(recorder.Texts(), c.format ? Texts{} : Texts{"Error - Invalid File"});
  }
  for (const Path& path : {folder / "none.sdx", folder}) {
    EXPECT_FALSE(CheckListFile(recorder.context, path));
    EXPECT_EQ(recorder.Texts(), Texts{"Unable to open the given file."});
  }
  const Path broken = "/proc/self/mem";  // can be opened, and nothing is mapped at its start
  if (Path::preferred_separator != '/' || !std::filesystem::exists(broken)) return;
  EXPECT_FALSE(CheckListFile(recorder.context, broken));
  ASSERT_EQ(recorder.shown.size(), 1u);
  EXPECT_EQ(recorder.shown[0].text, "Could not read file \"/proc/self/mem\".");
  EXPECT_EQ(recorder.shown[0].detail, ReadReason(broken, std::make_error_code(std::errc::io_error)));
}

// Lists in text, and documents, come into the page of the names; lists in bytes keep theirs.
TEST(ImportCommand, AnyDatabaseHasItsNamesInThePage) {
  Recorder recorder;
  const CodePage& page = *FindCodePage("Windows-1251");
  const Path& folder = recorder.context.temporary_folder;
  const auto name = [&](const char* file, const std::string& content) {
    PutFile(folder / file, BytesOf(content));
    AnyDatabase database;
    EXPECT_TRUE(OpenAnyDatabase(recorder.context, folder / file, {}, {}, page, database)) << file;
    EXPECT_EQ(database.document.names, &page) << file;
    return std::string(NameOf(database.document.sdbs.at(0).database->services.at(0)->record.name));
  };
  EXPECT_EQ(name("channels.conf", "Мир:11836:hC34:S19.2E:27500:101:102:0:0:7:0:0:0\n"), "\xCC\xE8\xF0");
  SdxRecord record;
  record.name = "\xD0\x9C______";
  EXPECT_EQ(name("a.sdx", SdxList({record})).substr(0, 2), "\xD0\x9C");
}

// What the user names is the format where it may be; else the file tells.
TEST(ImportCommand, NamedFormats) {
  const std::string vdr = "One:11836:hC34:S19.2E:27500:101:102:0:0:7:0:0:0\n";
  const struct {
    const char* file;
    std::string content;
    ListFormat named;
    std::optional<ListFormat> format;
  } cases[] = {{"a.dat", vdr, ListFormat::kVdr, ListFormat::kVdr},
               {"a.dat", vdr, ListFormat::kLyngsat, std::nullopt},
               {"a.dat", ":SAT", ListFormat::kVdr, ListFormat::kLyngsat},
               {"a.sdx", "\xEF\xBB\xBFSATCODX", ListFormat::kSatcodx, ListFormat::kSatcodx},
               {"none", "", ListFormat::kVdr, std::nullopt}};
  Recorder recorder;
  const ListOptions lenient = {.satcodx = {.layout = SatcodxLayout::kAuto}};
  for (const auto& c : cases) {
    const Path path = recorder.context.temporary_folder / c.file;
    if (!c.content.empty()) PutFile(path, BytesOf(c.content));
    EXPECT_EQ(RecognizeListAs(path, c.named, lenient), c.format) << c.file << ' ' << c.content;
  }
}

// The question comes before the list is read, hears its content, and says how.
TEST(ImportCommand, AskedHowToRead) {
  Recorder recorder;
  const Path path = recorder.context.temporary_folder / "a.sdx";
  const std::string list = SdxText({.name = "SPORT___", .rest = "ABC_________"});
  PutFile(path, BytesOf(list + list));
  WorkRecords work;
  ImportSteps steps;
  for (const bool go_on : {true, false}) {
    steps.ask = [&](const ListToAsk& asked, ListOptions& options) {
      EXPECT_EQ(std::tuple(asked.format, asked.path, asked.content.size()),
                std::tuple(ListFormat::kSatcodx, path, 2 * list.size()));
      options.satcodx.layout = SatcodxLayout::kAuto;
      return go_on;
    };
    EXPECT_EQ(ImportListFile(recorder.context, path, {}, steps, work), go_on);
    EXPECT_EQ(Names(work.services), go_on ? "SPORTABC" : "");
  }
  std::filesystem::remove(path);
  EXPECT_FALSE(ImportListFile(recorder.context, path, {}, steps, work));
}

// A list of each format, and what is told when it goes away, or breaks off, between the check and the
// reading.
TEST(ImportCommand, UnreadableLists) {
  const Path broken = "/proc/self/mem";  // can be opened, and nothing is mapped at its start
  const struct {
    const char *file, *content;
    Texts gone;
    const char* unreadable;
  } cases[] = {{"a.sdx", "SATCODX", {}, "Invalid or unsupported SDX file format."},
               {"a.dvb", "DVSO", {"Error in opening file"}, "Invalid or unsupported DAT file format."},
               {"a.dat", ":SAT", {"Error in opening file"}, "Invalid or unsupported DAT file format."}};
  for (const auto& c : cases) {
    Recorder recorder;
    const Path path = recorder.context.temporary_folder / c.file;
    std::function<void()> change = [&] { std::filesystem::remove(path); };
    const ImportSteps steps = {.run = [&](const ListReading& read) {
      change();
      return read(recorder.context);
    }};
    const auto import = [&] {
      PutFile(path, BytesOf(c.content));
      WorkRecords work;
      work.services.resize(3);
      const bool read = ImportListFile(recorder.context, path, {}, steps, work);
      EXPECT_TRUE(work.services.empty());
      return read;
    };
    EXPECT_EQ(import(), c.gone.empty()) << c.file;
    Texts gone = c.gone;
    if (!gone.empty()) gone.push_back(c.unreadable);
    EXPECT_EQ(recorder.Texts(), gone);
    std::error_code unlinked;  // a system without links has no file that breaks off
    std::filesystem::create_symlink(broken, recorder.context.temporary_folder / "link", unlinked);
    if (unlinked || !std::filesystem::exists(broken)) continue;
    change = [&] {
      std::filesystem::remove(path);
      std::filesystem::create_symlink(broken, path);
    };
    EXPECT_FALSE(import()) << c.file;
    EXPECT_EQ(recorder.Texts(), (Texts{"Could not read file \"" + Utf8FromPath(path) + "\".", c.unreadable}));
    std::filesystem::remove(path);
  }
}

// A list that was cut anywhere is read as far as it goes: all but the last service are those of the whole
// list.
TEST(ImportCommand, ListsCutAtEveryByte) {
  const auto satellite = [](const char* text) { return DvbRecord{.text = text}; };
  const auto service = [](uint16_t id) {
    return DvbRecord{.id = id, .frequency = 11778, .symbol_rate = 27500, .video = id, .text = "Name"};
  };
  struct {
    ListFormat format;
    std::string text;
    size_t record;  // bytes; 0: lines
  } const lists[] = {
      {ListFormat::kSatcodx, SdxList({{.video = "0001"}, {.video = "0002"}, {.video = "0003"}}), 128},
      {ListFormat::kDvb2000, DvbList({satellite("A-1\260E"), service(1), service(2), service(3)}), 64},
      {ListFormat::kLyngsat,
       ":SAT \"Astra\" 19.2 E\n:TRP 11778 27500 1 V 0 3/4\n:CHN \"One\" 1 T\n:CHN \"Two\" 2 R\n:CHN \"X\" 3 "
       "T\n",
       0}};
  const auto read_list = [](ListFormat format, std::span<const uint8_t> content, WorkRecords& work) {
    ListLosses losses;
    EXPECT_TRUE(RowOf(format).read({content, "", FactoryDefaults(), {}, {}}, work, losses));
  };
  for (const auto& list : lists) {
    SCOPED_TRACE(RowOf(list.format).name);
    const Bytes bytes = BytesOf(list.text);
    WorkRecords whole;
    read_list(list.format, bytes, whole);
    ASSERT_EQ(whole.services.size(), 3u);
    for (size_t size = 0; size <= bytes.size(); ++size) {
      WorkRecords work;
      read_list(list.format, std::span(bytes).first(size), work);
      const size_t read = work.services.size() + (list.record == 64 ? work.satellites.size() : 0);
      // The byte behind a SatcoDX list's first record says how long its records are.
      const size_t expected = list.record == 128 && size == 128 ? 0 : size / std::max<size_t>(list.record, 1);
      ASSERT_TRUE(list.record == 0 || read == expected) << size;
      for (size_t i = 0; i + 1 < work.services.size(); ++i)
        ASSERT_EQ(std::memcmp(&work.services[i], &whole.services[i], sizeof(WorkService)), 0) << size;
      Recorder recorder;
      Document document;
      ASSERT_TRUE(OpenWorkRecords(recorder.context, work, {}, document)) << size;
      EXPECT_EQ(CheckLinks(*document.sdbs.at(0).database), "") << size;
    }
  }
}

struct ImportManySatellites : testing::Test {
  bool Import(int satellites, FilterMode filter, const std::function<bool(WorkRecords&)>& choose) {
    std::vector<SdxRecord> records;
    for (int i = 0; i < satellites; ++i)
      records.push_back({.frequency = Format("%06d", 10700 + i), .position = Format("%04d", i + 1)});
    const Path path = recorder.context.temporary_folder / "list.sdx";
    PutFile(path, BytesOf(SdxList(records)));
    WorkRecords work;
    return ImportListFile(recorder.context, path, {}, {filter, choose, {}}, work) &&
           OpenWorkRecords(recorder.context, work, {}, document);
  }
  Recorder recorder;
  Document document;
};

TEST_F(ImportManySatellites, WithoutFilterTheChoiceStaysAway) {
  const auto never = [](WorkRecords&) -> bool { throw std::logic_error("asked"); };
  const std::string question = "Do you want to generate Bin file with filter mode";
  recorder.answer = false;
  EXPECT_FALSE(Import(86, FilterMode::kAsk, never));
  EXPECT_EQ(recorder.Texts(), (Texts{question, "Satellite records exceed the limit. Can not add."}));
  EXPECT_TRUE(Import(85, FilterMode::kAsk, never));
  EXPECT_EQ(recorder.Texts(), Texts{question});
  ASSERT_EQ(document.sdbs.size(), 1u);
  EXPECT_EQ(document.sdbs[0].database->satellites.size(), 85u);
  recorder.answer = true;
  EXPECT_FALSE(Import(86, FilterMode::kOff, never));
  EXPECT_EQ(recorder.Texts(), Texts{"Satellite records exceed the limit. Can not add."});
}

TEST_F(ImportManySatellites, FilterModeTakesWhatTheChoiceLeaves) {
  EXPECT_FALSE(Import(90, FilterMode::kAsk, [](WorkRecords&) { return false; }));
  EXPECT_TRUE(document.sdbs.empty());
  recorder.Texts();
  EXPECT_TRUE(Import(90, FilterMode::kOn, [](WorkRecords& work) {
    Wizard wizard(work);
    ChooseSatellite(wizard, 3, true);
    ChooseSatellite(wizard, 88, true);
    SetCarrierOption(wizard, std::nullopt, kAllCarriers, true);
    SetServiceOption(wizard, std::nullopt, kAllServices, true);
    CompactWorkRecords(wizard);
    return true;
  }));
  EXPECT_TRUE(recorder.shown.empty()) << "not asked";
  const StaticDatabase& database = *document.sdbs.at(0).database;
  ASSERT_EQ(database.satellites.size(), 2u);
  EXPECT_EQ(database.satellites[1]->record.angle, 89u);
  EXPECT_EQ(database.services.size(), 2u);
}

TEST(WorkRecords, AsFiles) {
  WorkRecords work;
  work.satellites.resize(2);
  work.carriers.resize(3);
  work.carriers[1].frequency = 11000;
  work.services.resize(5);
  const auto files = WorkFileContents(work, "dir");
  const Bytes contents[] = {Bytes(2 * 28), BytesOfRecords(work.carriers), Bytes(5 * 32)};
  const char* const names[] = {"~001sat.bin", "~001car.bin", "~001ser.bin"};
  for (size_t i = 0; i < files.size(); ++i) {
    EXPECT_EQ(files[i].path, Path("dir") / names[i]);
    EXPECT_EQ(files[i].content, contents[i]);
  }
}

}  // namespace
}  // namespace vexa
