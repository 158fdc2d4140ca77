#include "view/import_form.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/list_maker.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "view/completion_form.h"
#include "view/node_edit.h"
#include "view/target_file.h"

namespace vexa {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A list with its form, which looks into it.
struct Asked {
  Asked(ListFormat format, const char* name, const std::string& text, const char* shown_in = "Windows-1252")
      : content(BytesOf(text)),
        form(OpenImportForm(format, std::string("lists/") + name, content, {}, *FindCodePage(shown_in))) {}
  Bytes content;
  ImportForm form;

  // The rows of the dialog's list from their third column on, joined.
  std::vector<std::string> Rows() const {
    std::vector<std::string> rows;
    for (const ListWay& way : WaysOf(form)) {
      std::string row;
      for (const std::string& cell : way) row += (row.empty() ? "" : "|") + cell;
      rows.push_back(row);
    }
    return rows;
  }
  ImportChoice Choice() const {
    ImportChoice choice;
    EXPECT_FALSE(AcceptImportForm(form, choice));
    return choice;
  }
};

TEST(ImportForm, EveryLayoutShowsItsFirstRecords) {
  Asked asked(ListFormat::kSatcodx, "tv.sdx", TelevisionList());
  EXPECT_TRUE(HasQuestions(asked.form));
  EXPECT_EQ(
      ImportQuestion(asked.form),
      "tv.sdx does not look as lists of its format do: its version is 105. Choose the row that reads it "
      "right.");
  const auto rows = asked.Rows();
  ASSERT_EQ(rows.size(), std::size(kSatcodxLayouts));
  EXPECT_EQ(rows[0].substr(0, 12), "default|129|");
  EXPECT_EQ(rows[1], "auto|134|ASTRA 1, 019.2|11778 Vertical 27500|Das Erste HD|1|1|2");
  EXPECT_EQ(rows[4], "105|134|ASTRA 1, 019.2|11778 Vertical 27500|Das Erste HD|1|1|2");
  EXPECT_EQ(asked.Choice().options.satcodx.layout, SatcodxLayout::kDefault) << "unless another is chosen";
  asked.form.layout = 4;
  asked.form.record_length = "134";
  EXPECT_EQ(asked.Choice().options.satcodx.layout, SatcodxLayout::k105);
  EXPECT_EQ(asked.Choice().options.satcodx.record_length, 134u);
  EXPECT_EQ(asked.Rows()[0].substr(0, 12), "default|134|");
  for (const char* wrong : {"126", "65536", "0", "x", "99999999999999999999"}) {
    asked.form.record_length = wrong;
    ImportChoice choice;
    const auto refusal = AcceptImportForm(asked.form, choice);
    EXPECT_EQ(refusal ? refusal->text : "", "Record length should be in the range of 127 - 65535.") << wrong;
    EXPECT_EQ(choice.names, nullptr);
  }
}

TEST(ImportForm, NothingIsAskedOfAPlainList) {
  const Asked plain(ListFormat::kSatcodx, "a.sdx", SdxList({{}, {.id = "00002"}}, true));
  EXPECT_FALSE(HasQuestions(plain.form)) << plain.form.doubt;
  EXPECT_EQ(plain.Choice().options.pages.database, nullptr) << "the bytes stay";
  EXPECT_FALSE(HasQuestions(
      Asked(ListFormat::kVdr, "channels.conf", "One:11836:hC34:S19.2E:27500:101:102:0:0:7:0:0:0\n").form));
  EXPECT_TRUE(HasQuestions(
      Asked(ListFormat::kSatcodx, "b.sdx", "\xEF\xBB\xBF" + SdxList({{}, {.id = "00002"}}, true)).form));
}

TEST(ImportForm, PagesOfListsInBytes) {
  const auto list = [](const char* name) {
    return ":SAT \"Astra\" 19.2 E\n:TRP 11778 27500S 0 H 0 3/4\n:CHN \"" + std::string(name) + "\" 1 T\n";
  };
  Asked bytes(ListFormat::kLyngsat, "a.dat", list("\xCA\xE8\xED\xEE"), "Windows-1251");
  EXPECT_EQ(
      ImportQuestion(bytes.form),
      "a.dat leaves open how it is to be read.\nNames have characters beyond ASCII: choose the code pages.");
  EXPECT_THAT(bytes.Rows(), ElementsAre("lyngsat||Astra, 019.2|11778 Horizontal 27500|"
                                        "\xD0\x9A\xD0\xB8\xD0\xBD\xD0\xBE|1|1|1"));
  EXPECT_EQ(bytes.Choice().options.pages.database, nullptr);
  EXPECT_EQ(bytes.Choice().names->name, "Windows-1251");
  const auto choose = [&](size_t page, size_t list_page) {
    bytes.form.page = page;
    bytes.form.list_page = list_page;
    const ListPages pages = bytes.Choice().options.pages;
    return (pages.database ? pages.database->name : "") + "/" + (pages.list ? pages.list->name : "");
  };
  ASSERT_EQ(bytes.form.pages[2], "Windows-1251");
  EXPECT_EQ(choose(9, 0), "ISO 8859-5/");
  EXPECT_EQ(choose(9, 2), "ISO 8859-5/Windows-1251");
  EXPECT_EQ(choose(0, 9), "Windows-1251/ISO 8859-5") << "to the page that is shown";

  const Asked utf8(ListFormat::kLyngsat, "a.dat", list("K\xC3\xB6ln"));
  EXPECT_TRUE(utf8.form.utf8 && utf8.form.names);
  EXPECT_THAT(utf8.form.list_pages, ElementsAre("UTF-8"));
  EXPECT_EQ(utf8.Choice().options.pages.list, nullptr);
}

TEST(ImportForm, ChannelsOfOtherReceivers) {
  const std::string list =
      "Kr\xC3\xB6n:11836:hC34:S19.2E:27500:101:102:0:0:7:0:0:0\n"
      "S two:12000:vC34S1:S19.2E:27500:101:102:0:0:8:0:0:0\n";
  Asked asked(ListFormat::kVdr, "channels.conf", list, "ISO 8859-15");
  EXPECT_EQ(
      ImportQuestion(asked.form),
      "channels.conf leaves open how it is to be read.\nNames have characters beyond ASCII, in UTF-8: choose "
      "the database's code page.\n1 DVB-S2 carriers and their services are left out, unless they are kept.");
  EXPECT_EQ(asked.form.pages[asked.form.page], "ISO 8859-15");
  EXPECT_THAT(asked.Rows(), ElementsAre("vdr||19.2E, 019.2|11836 Horizontal 27500|Kr\xC3\xB6n|1|1|1"));
  asked.form.keep_s2 = true;
  EXPECT_THAT(asked.Rows(), ElementsAre("vdr||19.2E, 019.2|11836 Horizontal 27500|Kr\xC3\xB6n|1|2|2"));
  EXPECT_TRUE(asked.Choice().options.keep_s2);
  // What the page lacks is asked about, too, though it is ASCII then.
  EXPECT_TRUE(
      HasQuestions(Asked(ListFormat::kVdr, "a.conf", "\xD0\x96:11836:hC34:S19.2E:27500:1:2:0:0:7\n").form));
}

TEST(CompletionForm, OffersWhatMeansSomething) {
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  EXPECT_FALSE(CanComplete(database));
  for (size_t i = 0; i < kMaximumSatellites; ++i) {
    AddTestSatellite(database, "S");
    EXPECT_TRUE(CanComplete(database));
    const CompletionEnabling said = EnabledTicks(OpenCompletionForm(database, true)),
                             unsaid = EnabledTicks(OpenCompletionForm(database, false));
    EXPECT_EQ(std::pair(said.sides, unsaid.sides), (std::pair{false, true}));
    EXPECT_EQ(said.slots, i + 1 < kMaximumSatellites);
  }
  EXPECT_FALSE(OpenCompletionForm(database, true).wanted.any());
  EXPECT_THAT(CompletionText(database, "a.sdx"),
              testing::StartsWith("a.sdx is imported. Satellites: 85, carriers: 0, services: 0.\n"));
}

TEST(TargetFile, IsNamedAfterAList) {
  const struct {
    const char *list, *name;
  } cases[] = {
      {"f/channels.conf", "f/channels.bin"}, {"lamedb", "lamedb.bin"}, {"Astra-19.2E", "Astra-19.2E.bin"},
      {"f.d/a.b.SDX", "f.d/a.b.bin"},        {".sdx", ".sdx.bin"},     {"a.", "a..bin"}};
  for (const auto& c : cases) EXPECT_EQ(NamedAfter(c.list, ".bin"), Path(c.name)) << c.list;
}

// Rows of the editor's list, by the record's place in its own list.
struct Duplicated : testing::Test {
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  NodeRef level{.kind = NodeKind::kSdb};
  Rows In(const NodeRef& node, ListView view = ListView::kBelow) {
    return DuplicateRows(ListBelow(document, node, view, false).rows);
  }
};

TEST_F(Duplicated, RowsThatRepeatAnEarlierRecordOfTheirList) {
  for (const uint32_t angle : {192u, 130u, 192u, 0u, 0u, 192u})
    AddTestSatellite(database, "S")->record.angle = angle & 0xFFF;
  database.satellites[5]->record.east = !database.satellites[0]->record.east;
  EXPECT_THAT(In(level), ElementsAre(2));
  for (const auto& [satellite, frequency] :
       {std::pair{0, 11000}, {0, 11003}, {0, 11007}, {1, 11000}, {1, 11001}})
    AddTestCarrier(database, static_cast<size_t>(satellite))->record.frequency =
        static_cast<uint32_t>(frequency);
  EXPECT_THAT(In(level, ListView::kCarriers), ElementsAre(1, 4)) << "each satellite by itself";
  for (const char* name : {"A", "B", "A", "", "", "A"})
    SetName(AddTestService(database, database.carriers[0])->record.name, name);
  database.services[0]->record.type = kRadio;
  EXPECT_THAT(In(level, ListView::kServices), ElementsAre(2, 5));
  // Only what the list shows counts: of its first record nothing is marked.
  EXPECT_THAT(In(level, ListView::kTvServices), ElementsAre(4));
  auto rows = ListBelow(document, level, ListView::kServices, false).rows;
  std::reverse(rows.begin(), rows.end());
  EXPECT_THAT(DuplicateRows(rows), ElementsAre(0, 3)) << "another order on the screen changes nothing";
  for (const size_t service : {0u, 1u, 0u, 1u})
    database.favourites[3].tv.push_back(database.services[service]);
  NodeRef group{.kind = NodeKind::kTvGroup, .index = 3};
  EXPECT_THAT(In(group), ElementsAre(2, 3));
  group.kind = NodeKind::kTvGroupLevel;
  EXPECT_THAT(In(group), IsEmpty());
  EXPECT_EQ(DuplicatesText(0), "No record of this list repeats an earlier one.");
  EXPECT_EQ(DuplicatesText(1), "1 duplicate is selected.");
  EXPECT_EQ(DuplicatesText(2), "2 duplicates are selected.");
}

}  // namespace
}  // namespace vexa
