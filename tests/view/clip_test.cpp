// Records on the clipboard: what comes out of it is what went in, judged by comparing databases.
#include "view/clip.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/compare.h"
#include "core/complete.h"
#include "core/match.h"
#include "import/csv_table.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "view/tree_path.h"

namespace vexa {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct Clips : testing::Test {
  Recorder recorder;
  Document document = SmallDocument(), other = NewDocument();

  NodeRef At(const Document& of, const TreePath& path) { return NodesAlong(of, path).back(); }
  std::vector<NodeRef> Rows(const TreePath& path, ListView view = ListView::kBelow) {
    return ListBelow(document, At(document, path), view, false).rows;
  }
  std::optional<Pasted> Carry(const std::vector<NodeRef>& rows, Document& to, const TreePath& at,
                              const NodeRef& row = {}) {
    const auto clip = CopyNodes(recorder.context, document, rows);
    if (!clip) return std::nullopt;
    const auto pasted = PasteNodes(recorder.context, to, At(to, at), row, *clip);
    for (const OpenSdb& sdb : to.sdbs) EXPECT_EQ(CheckLinks(*sdb.database), "");
    return pasted;
  }
};

TEST_F(Clips, RecordsComeWithAllBelowThem) {
  StaticDatabase &from = *document.sdbs[0].database, &to = *other.sdbs[0].database;
  from.favourites[0].tv = {from.services[3]};
  EXPECT_THAT(Carry(Rows({0, 1}), other, {0}), testing::Eq(std::nullopt));
  EXPECT_THAT(recorder.Texts(), ElementsAre("Add atleast one LNB to add a satellite."));
  EXPECT_EQ(Carry(Rows({0, 0}), other, {0})->records, 2u);
  EXPECT_EQ(Carry(Rows({0, 1}), other, {0})->records, 2u);
  EXPECT_THAT(DifferenceLines(CompareDocuments(document, 0, other, 0)),
              testing::AllOf(HasSubstr("- SDB1 TV group 1 entry 1"), testing::Not(HasSubstr("satellite"))));
  // A whole SDB has its favourites too.
  EXPECT_EQ(Carry({At(document, {0})}, other, {0})->records, 1u);
  ASSERT_EQ(other.sdbs.size(), 2u);
  EXPECT_EQ(DatabaseDifference(*other.sdbs[1].database, from), "");
  EXPECT_EQ(Carry({At(document, {1, 0})}, other, {2})->records, 1u);
  EXPECT_EQ(other.ubis.at(0).name, "Box");
  EXPECT_EQ(Carry({Rows({0, 1})[0]}, document, {0, 1}, Rows({0, 1})[0])->records, 1u);
  EXPECT_EQ(NamesOf(from.satellites), (std::vector<std::string>{"S1", "S1", "S2"})) << "behind the row";
  EXPECT_EQ(to.satellites.size(), 2u);
  // A saved file has all its places, of which the last unused ones make room.
  AddEmptySlots(to, FactoryDefaults());
  EXPECT_EQ(Carry(Rows({0, 1}), other, {0})->records, 3u);
  EXPECT_EQ(Carry({Rows({0, 1})[2]}, other, {0, 1},
                  ListBelow(other, At(other, {0, 1}), ListView::kBelow, false).rows[0])
                ->records,
            1u);
  std::vector<std::string> names = {"S1", "S2", "S2", "S1", "S1", "S2"};
  for (unsigned number = 1; names.size() < kMaximumSatellites; ++number)
    names.push_back(EmptySlotName(number));
  EXPECT_EQ(NamesOf(to.satellites), names);
}

TEST_F(Clips, CarriersAndServicesNeedTheirPlace) {
  StaticDatabase& database = *document.sdbs[0].database;
  const auto carriers = Rows({0, 1, 0}), services = Rows({0, 1, 0, 0});
  EXPECT_FALSE(Carry(carriers, document, {0}));
  EXPECT_FALSE(Carry(services, document, {0, 1, 0}));
  EXPECT_THAT(recorder.Texts(), ElementsAre("Select the satellite that the carriers are to go to.",
                                            "Select the carrier that the services are to go to."));
  EXPECT_EQ(Carry(carriers, document, {0, 1, 1}, Rows({0, 1, 1})[0])->records, 2u);
  EXPECT_EQ(NamesOf(database.satellites[1]->carriers),
            (std::vector<std::string>{"S2C1", "S1C1", "S1C2", "S2C2"}));
  EXPECT_EQ(database.satellites[1]->carriers[1]->services.size(), 3u);
  // Numbers that are taken become free ones.
  const auto pasted = Carry({services[0], services[2]}, document, {0, 1, 0, 0}, services[0]);
  EXPECT_EQ(pasted->records, 2u);
  EXPECT_EQ(pasted->renumbered, 2u);
  std::vector<uint32_t> numbers;
  for (const Service* service : database.carriers[0]->services)
    numbers.push_back(service->record.program_number);
  EXPECT_THAT(numbers, ElementsAre(1, 4, 5, 2, 3));
}

TEST_F(Clips, ServicesPastedIntoAGroupAreItsEntries) {
  StaticDatabase& database = *document.sdbs[0].database;
  database.services[2]->record.type = kRadio;
  EXPECT_EQ(Carry(Rows({0, 1, 0, 0}), document, {0, 2, 4})->records, 2u);
  const auto said = [&](const std::vector<NodeRef>& rows, Document& to, const TreePath& group) {
    const auto pasted = Carry(rows, to, group);
    return pasted ? AdditionText(pasted->addition.value()) : "";
  };
  EXPECT_EQ(said(Rows({0, 1, 0, 0}), document, {0, 3, 4}), "1 added, 0 there before, 2 did not fit");
  EXPECT_EQ(said(Rows({0, 2, 4}), document, {0, 3, 4}), "0 added, 0 there before, 2 did not fit");
  EXPECT_EQ(said(Rows({0, 2, 4}), document, {0, 2, 4}), "0 added, 2 there before, 0 did not fit");
  // One that the SDB does not have.
  Document smaller = SmallDocument();
  DeleteServices(*smaller.sdbs[0].database, {smaller.sdbs[0].database->services[0]});
  EXPECT_EQ(said(Rows({0, 2, 4}), smaller, {0, 2, 4}), "1 added, 0 there before, 1 did not fit");
  EXPECT_EQ(NamesOf(database.favourites[4].tv), (std::vector<std::string>{"S1C1P1", "S1C1P2"}));
  EXPECT_EQ(Carry(Rows({0, 2, 4}), document, {0, 2, 5})->records, 2u) << "from group to group";
  EXPECT_FALSE(Carry(Rows({0, 1, 0, 0}), other, {0, 2, 4}));
  EXPECT_THAT(recorder.Texts(), ElementsAre("This SDB has none of these services."));
}

TEST_F(Clips, SatellitesUseTheLnbThatIsSetAsTheirsWas) {
  StaticDatabase &from = *document.sdbs[0].database, &to = *other.sdbs[0].database;
  from.lnbs[1].frequency1 = 5150;
  for (Satellite* satellite : from.satellites) satellite->record.lnb_index = 1;
  to.lnb_count = 3;
  to.lnbs[2] = from.lnbs[1];
  EXPECT_EQ(Carry(Rows({0, 1}), other, {0})->other_lnbs, 0u);
  EXPECT_EQ(to.satellites[0]->record.lnb_index, 2u);
  to.lnb_count = 1;
  EXPECT_EQ(Carry(Rows({0, 1}), other, {0})->other_lnbs, 2u);
  EXPECT_EQ(to.satellites[2]->record.lnb_index, 0u);
}

TEST_F(Clips, TextGoesToASpreadsheetAndBack) {
  StaticDatabase& database = *document.sdbs[0].database;
  SetName(database.services[4]->record.name, "a \"b\"");
  const auto rows = Rows({0, 1, 0}, ListView::kServices);
  std::string text = TextOfNodes(document, {rows[4], rows[0]});
  EXPECT_EQ(text.substr(0, 10), "satellite\t");
  EXPECT_THAT(
      text,
      HasSubstr("\r\n1\tS1\t1\tS1C1\t11000\tHorizontal\t1\t1\t1\tS1C1P1\t1\tTV\tYes\t100\t100\t100\r\n"));
  EXPECT_THAT(text, HasSubstr("\"a \"\"b\"\"\""));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3);
  text.replace(text.find("S1C1P1"), 6, "Changed");
  EXPECT_TRUE(UpdateFromTableText(recorder.context.messages, "x", text, Windows1252(), database,
                                  [](const std::string&) { return MissingRows::kKeep; }));
  EXPECT_EQ(NameOf(database.services[0]->record.name), "Changed");
  EXPECT_EQ(database.services.size(), 12u);
  EXPECT_THAT(TextOfNodes(document, {At(document, {0})}), IsEmpty());
  document.names = FindCodePage("Windows-1251");
  SetName(database.services[0]->record.name, "\xCF\xE5\xF0");
  EXPECT_THAT(TextOfNodes(document, {rows[0]}), HasSubstr("\t\u041F\u0435\u0440\t"));
  for (const TreePath& path : {TreePath{0, 0}, TreePath{0, 1}, TreePath{0, 1, 0}})
    EXPECT_THAT(TextOfNodes(document, {Rows(path)[1]}), HasSubstr("\r\n")) << path.size();
}

TEST_F(Clips, WhatIsNoClipIsTold) {
  for (const char* bytes : {"", "VexaClip", "VexaClip\x09\x01\x01Qz", "SomethingElse"}) {
    EXPECT_FALSE(PasteNodes(recorder.context, document, At(document, {0}), {}, BytesOf(bytes)));
    EXPECT_THAT(recorder.Texts(), ElementsAre("There is nothing to paste."));
  }
  EXPECT_FALSE(CopyNodes(recorder.context, document, {At(document, {0, 1})}));
}

// Random rows of random documents: as many records more as were copied, each saying the same.
TEST(RandomClips, HoldWhatWasCopied) {
  std::mt19937 random(8);
  Recorder recorder;
  for (int round = 0; round < 60; ++round) {
    Document document = MakeRandomDocument(random), other = NewDocument();
    StaticDatabase& to = *other.sdbs[0].database;
    to.lnb_count = 1;
    AddTestCarrier(to, (AddTestSatellite(to, "S"), 0));
    const ListView view = round % 2 ? ListView::kCarriers : ListView::kServices;
    std::vector<NodeRef> rows;
    for (const NodeRef& row : ListBelow(document, RootNodes(document)[0], view, false).rows)
      if (random() % 4 == 0) rows.push_back(row);
    if (rows.empty()) continue;
    const auto clip = CopyNodes(recorder.context, document, rows);
    ASSERT_TRUE(clip.has_value());
    const NodeRef at =
        NodesAlong(other, view == ListView::kCarriers ? TreePath{0, 1, 0} : TreePath{0, 1, 0, 0}).back();
    const auto pasted = PasteNodes(recorder.context, other, at, {}, *clip);
    ASSERT_TRUE(pasted.has_value());
    EXPECT_EQ(pasted->records, rows.size());
    ASSERT_EQ(CheckLinks(to), "");
    std::multiset<std::string> expected, found;
    for (const NodeRef& row : rows) {
      const auto& services =
          view == ListView::kCarriers ? row.carrier->services : std::vector<Service*>{row.service};
      for (const Service* service : services)
        expected.insert(std::string(NameOf(service->record.name)) +
                        std::to_string(service->record.audio_pid));
    }
    for (const Service* service : to.services)
      found.insert(std::string(NameOf(service->record.name)) + std::to_string(service->record.audio_pid));
    EXPECT_EQ(found, expected) << round;
  }
}

}  // namespace

}  // namespace vexa
