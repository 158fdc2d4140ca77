// Every file format, cut at every byte: refused with a message, or read as far as it goes and no further.
// (The lists, URT files and kept work have theirs in their own rooms.)
#include <algorithm>
#include <cstring>

#include "config/ecf.h"
#include "core/messages.h"
#include "import/csv_document.h"
#include "import/json_document.h"
#include "serial/trace.h"
#include "serial/trace_story.h"
#include "tests/cli/cli_test.h"
#include "tests/support/ecf_maker.h"

namespace vexa {
namespace {

// Whether the records are the first ones of the others, bit by bit, and all of them when `all`.
template <class T>
bool AreFirstOf(const std::vector<T*>& read, const std::vector<T*>& whole, bool all) {
  if (read.size() > whole.size() || (all && read.size() != whole.size())) return false;
  return std::equal(read.begin(), read.end(), whole.begin(), [](const T* one, const T* other) {
    return std::memcmp(&one->record, &other->record, sizeof one->record) == 0;
  });
}

struct CutFiles : CliTest {
  int told = 0;
  Context context;
  CutFiles() {
    context.messages.tell = [this](const Message&) { ++told; };
    context.messages.ask = [](const std::string&, const std::string&, bool) { return false; };
  }

  void CutDatabase(const Bytes& whole) {
    Document full;
    ASSERT_TRUE(OpenBinBytes(context, whole, full));
    for (size_t size = 0; size < whole.size(); ++size) {
      SCOPED_TRACE(size);
      told = 0;
      Document cut;
      const bool opened = OpenBinBytes(context, std::span(whole).first(size), cut);
      // A part of a file says so, and is not saved over it.
      ASSERT_TRUE(opened || told > 0);
      ASSERT_LE(cut.sdbs.size(), full.sdbs.size());
      for (size_t i = 0; i < cut.sdbs.size(); ++i) {
        const StaticDatabase &read = *cut.sdbs[i].database, &original = *full.sdbs[i].database;
        ASSERT_EQ(CheckLinks(read), "");
        ASSERT_EQ(cut.sdbs[i].name, full.sdbs[i].name);
        ASSERT_TRUE(AreFirstOf(read.satellites, original.satellites, opened));
        ASSERT_TRUE(AreFirstOf(read.carriers, original.carriers, opened));
        ASSERT_TRUE(AreFirstOf(read.services, original.services, opened));
      }
      ASSERT_TRUE(!opened || !cut.read_whole || cut.sdbs.size() == full.sdbs.size());
    }
  }
};

TEST_F(CutFiles, Databases) {
  for (const bool payload : {false, true}) {
    for (const bool streams : {false, true}) {
      SCOPED_TRACE(Format("payload %d, streams %d", payload, streams));
      Document document = SmallDocument();
      document.sdbs.push_back({1, "SDB2", CopyDatabase(*document.sdbs[0].database)});
      document.slot_mask |= 2;
      document.compress_payload = payload;
      document.compress_ubis = document.sdbs[1].database->compressed = streams;
      const auto bytes = BuildBin(context, document);
      ASSERT_TRUE(bytes);
      CutDatabase(*bytes);
    }
  }
}

TEST_F(CutFiles, SubsetsAndBareStreams) {
  Save(SmallDocument(), "base.bin");
  ASSERT_EQ(Vexa("save @base.bin -o @subset.bin --satellites 1-2").status, 0);
  CutDatabase(Get("subset.bin"));
  const Bytes base = Get("base.bin");
  CutDatabase(Bytes(base.begin() + kBinHeaderSize + 2 * kBinEntrySize, base.end()));
}

TEST_F(CutFiles, Configurations) {
  EcfConfigurationSpec configuration{.name = "one"};
  configuration.regions = {{"flash", 1, 0, 99}};
  configuration.partitions = {{.type = 1, .bits = 1, .length = 50}};
  configuration.languages = {{.fills = {1, 2}}};
  const Bytes whole =
      MakeEcf({{0x1A, {{.first_records = 1, .second_records = 2, .configurations = {configuration, {}}}}}});
  ProjectConfig full;
  PutFile(At("f.ecf"), whole);
  ASSERT_TRUE(InitConfig(context, At("f.ecf"), full));
  for (size_t size = 0; size < whole.size(); ++size) {
    SCOPED_TRACE(size);
    PutFile(At("f.ecf"), std::span(whole).first(size));
    told = 0;
    ProjectConfig cut;
    const bool loaded = InitConfig(context, At("f.ecf"), cut);
    ASSERT_EQ(told, loaded ? 0 : 1);
    ASSERT_EQ(Listing(cut), Listing(loaded ? full : ProjectConfig()));
    told = 0;
    bool compiles = true;
    DescribeEcf(context, "f.ecf", std::span(whole).first(size), compiles);
    ASSERT_TRUE(!compiles && told > 0);
  }
}

// A record of each kind, and a second service: a longer text takes longer by its square.
Document TinyDocument() {
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  database.lnb_count = 1;
  AddTestSatellite(database, "Zeta");
  Carrier* carrier = AddTestCarrier(database, 0);
  for (int i = 0; i < 2; ++i) AddTestService(database, carrier);
  return document;
}

TEST_F(CutFiles, Documents) {
  const Document document = TinyDocument();
  const std::string json = JsonOfDocument(document, Windows1252());
  // Without its last line end it is whole.
  for (size_t size = 0; size + 1 < json.size(); ++size) {
    Document cut;
    const auto misfit = ReadJsonDocument(std::string_view(json).substr(0, size), Windows1252(), cut);
    ASSERT_TRUE(misfit && !misfit->what.empty()) << size;
  }
}

// A table that ends with a whole row cannot be told from a shorter one.
TEST_F(CutFiles, Tables) {
  const Document document = TinyDocument();
  const std::string csv = CsvOfSdb(document.sdbs[0], Windows1252());
  const StaticDatabase& original = *document.sdbs[0].database;
  size_t read_whole_rows = 0;
  for (size_t size = 0; size < csv.size(); ++size) {
    SCOPED_TRACE(size);
    Document cut;
    if (ReadCsvDocument(std::string_view(csv).substr(0, size), Windows1252(), cut)) continue;
    ++read_whole_rows;
    const StaticDatabase& read = *cut.sdbs.at(0).database;
    ASSERT_EQ(CheckLinks(read), "");
    const auto names = [](const auto& records, const auto& others) {
      const auto one = NamesOf(records), other = NamesOf(others);
      return one.size() <= other.size() && std::equal(one.begin(), one.end(), other.begin());
    };
    ASSERT_TRUE(names(read.satellites, original.satellites) && names(read.carriers, original.carriers) &&
                names(read.services, original.services));
  }
  EXPECT_GT(read_whole_rows, 0u);
}

TEST_F(CutFiles, RecordsOfTheLine) {
  const std::vector<uint8_t> packet = {2, 1, 2, 3, 4, 5};
  std::string trace;
  for (int i = 0; i < 4; ++i)
    trace += Format("%9.3f %s %s\n", i * 0.5, i % 2 ? "PC> " : "STB>", TraceBytes(packet).c_str());
  trace += "    2.000      (the same again, 2 times)\n    2.500      -- a text\n";
  size_t line = 0;
  const auto whole = ReadTrace(trace, line);
  ASSERT_TRUE(whole);
  for (size_t size = 0; size < trace.size(); ++size) {
    SCOPED_TRACE(size);
    line = 0;
    const auto cut = ReadTrace(std::string_view(trace).substr(0, size), line);
    if (!cut) {
      ASSERT_GT(line, 0u);
      continue;
    }
    ASSERT_LE(cut->size(), whole->size());
    for (size_t i = 0; i + 1 < cut->size(); ++i) {
      ASSERT_EQ((*cut)[i].bytes, (*whole)[i].bytes);
      ASSERT_EQ((*cut)[i].kind, (*whole)[i].kind);
    }
    ASSERT_FALSE(TraceStoryText(ExplainTrace(*cut)).empty());
  }
}

}  // namespace
}  // namespace vexa
