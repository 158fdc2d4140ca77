// Which rows a window selects after an undo or redo, beside a slow model that compares what each record says.
#include "view/changes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "core/edit.h"
#include "core/sort.h"
#include "core/undo.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "view/node_edit.h"
#include "view/row_order.h"

namespace vexa {

namespace {

using testing::ElementsAre;

struct ChangesTest : testing::Test {
  Recorder recorder;
  Document document = SmallDocument();
  DocumentMarks before = MarksOf(document);
  StaticDatabase& database() { return *document.sdbs[0].database; }
  // "path: rows" of each list that changed.
  std::vector<std::string> Told() {
    std::vector<std::string> lines;
    for (const ChangedRows& change : ChangesSince(before, document)) {
      std::string line;
      for (const uint32_t place : change.parent) line += std::to_string(place) + '/';
      for (const size_t row : change.rows) line += ' ' + std::to_string(row);
      lines.push_back(line);
    }
    return lines;
  }
};

TEST_F(ChangesTest, NameTheRowsOfEachList) {
  EXPECT_THAT(Told(), ElementsAre());
  const struct {
    const char* what;
    std::function<void()> change;
    std::vector<std::string> told;
  } rows[] = {
      {"a field of a service", [&] { database().services[4]->record.audio_pid = 99; }, {"0/1/0/1/ 1"}},
      {"fields of two carriers",
       [&] {
         for (Carrier* carrier : database().satellites[1]->carriers) carrier->record.frequency += 10;
       },
       {"0/1/1/ 0 1"}},
      {"a name of a satellite", [&] { SetName(database().satellites[1]->record.name, "T"); }, {"0/1/ 1"}},
      {"a new service",
       [&] { AddService(recorder.context.messages, database(), *database().carriers[0], {}); },
       {"0/1/0/0/ 3"}},
      {"a service gone", [&] { DeleteServices(database(), {database().services[1]}); }, {"0/1/0/0/"}},
      {"a service on another carrier",
       [&] {
         database().services[0]->record.program_number = 77;
         MoveServicesToCarrier(recorder.context.messages, database(), {database().services[0]},
                               *database().carriers[1]);
       },
       {"0/1/0/0/", "0/1/0/1/ 3"}},
      {"a satellite moved",
       [&] { MoveSatellites(recorder.context.messages, database(), {1}, "1"); },
       {"0/1/ 0"}},
      {"a favourite", [&] { database().favourites[2].tv.push_back(database().services[5]); }, {"0/2/2/ 0"}},
      {"a group's name", [&] { SetName(database().favourites[1].record.radio_name, "R"); }, {"0/3/ 1"}},
      {"an LNB",
       [&] { AddLnb(recorder.context.messages, database(), {}); },
       {"0/0/ " + std::to_string(database().lnb_count)}},
      {"an SDB", [&] { AddSdb(recorder.context.messages, document); }, {" 1"}},
      {"a box's name", [&] { document.ubis[0].name = "Other"; }, {"1/ 0"}},
      {"the running order, which no list shows",
       [&] { std::swap(database().service_order[0], database().service_order[1]); },
       {}}};
  for (const auto& row : rows) {
    document = SmallDocument();
    before = MarksOf(document);
    row.change();
    EXPECT_EQ(Told(), row.told) << row.what;
  }
}

// The rows that one view shows are selected together, wherever their records lie.
TEST_F(ChangesTest, AreSeenInTheViewThatHoldsThemAll) {
  using Numbers = std::vector<size_t>;
  const struct {
    Numbers lost, services, carriers;  // gone and changed; those of the second SDB from 12 and 4 on
    TreePath node;
    ListView view;
    std::vector<std::string> rows;
  } rows[] = {
      {{}, {3, 5}, {}, {0, 1, 0, 1}, ListView::kBelow, {"S1C2P1", "S1C2P3"}},
      {{}, {0, 5}, {}, {0, 1, 0}, ListView::kServices, {"S1C1P1", "S1C2P3"}},
      {{}, {1, 2, 9}, {}, {0, 1}, ListView::kServices, {"S1C1P2", "S1C1P3", "S2C2P1"}},
      {{}, {0, 5, 12}, {}, {0, 1, 0}, ListView::kServices, {"S1C1P1", "S1C2P3"}},
      {{}, {15, 21}, {}, {1, 1}, ListView::kServices, {"S1C2P1", "S2C2P1"}},
      {{}, {}, {1, 3, 5}, {0, 1}, ListView::kCarriers, {"S1C2", "S2C2"}},
      {{}, {7}, {1}, {0, 1, 0}, ListView::kBelow, {"S1C2"}},
      {{0}, {}, {}, {0, 1, 0, 0}, ListView::kBelow, {}},
      {{0, 5}, {}, {}, {0, 1, 0}, ListView::kServices, {}},
      {{0}, {6, 9}, {}, {0, 1, 1}, ListView::kServices, {"S2C1P1", "S2C2P1"}},
      {{}, {}, {}, {}, ListView::kBelow, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    document = SmallDocument();
    Document second = SmallDocument();
    document.sdbs.push_back(std::move(second.sdbs[0]));
    database().favourites[0].tv = {database().services[9]};  // says something else, too
    before = MarksOf(document);
    const auto of = [&](size_t number, size_t count) -> StaticDatabase& {
      return *document.sdbs[number / count].database;
    };
    for (const size_t i : row.services) of(i, 12).services[i % 12]->record.audio_pid = 99;
    for (const size_t i : row.carriers) of(i, 4).carriers[i % 4]->record.frequency += 7;
    std::vector<Service*> lost;
    for (const size_t i : row.lost) lost.push_back(database().services[i]);
    DeleteServices(database(), lost);
    const ChangesInView in_view = ViewOfChanges(document, ChangesSince(before, document));
    EXPECT_EQ(in_view.node, row.node);
    EXPECT_EQ(in_view.view, row.view);
    std::vector<std::string> names;
    for (const NodeRef& node : in_view.rows)
      names.emplace_back(NameOf(node.service ? node.service->record.name : node.carrier->record.name));
    EXPECT_EQ(names, row.rows);
    if (row.node.empty()) continue;
    const auto list = ListBelow(document, NodesAlong(document, row.node).back(), row.view, false).rows;
    const auto chosen = RowsOfNodes(list, in_view.rows);
    EXPECT_EQ(static_cast<size_t>(std::count(chosen.begin(), chosen.end(), true)), row.rows.size());
  }
  before = MarksOf(document);
  document.sdbs[1].name = "Two";
  const ChangesInView root = ViewOfChanges(document, ChangesSince(before, document));
  EXPECT_TRUE(root.node == TreePath{1} && root.rows.empty());
}

// What the satellites, carriers and services of a document say, by their ways.
std::map<TreePath, std::string> Sayings(const Document& document) {
  std::map<TreePath, std::string> all;
  const auto bytes = [](const auto& record) {
    return std::string(reinterpret_cast<const char*>(&record), sizeof record);
  };
  for (uint32_t d = 0; d < document.sdbs.size(); ++d) {
    const auto& satellites = document.sdbs[d].database->satellites;
    for (uint32_t s = 0; s < satellites.size(); ++s) {
      SatelliteRecord satellite = satellites[s]->record;
      satellite.carrier_count = 0;
      all[{d, 1, s}] = bytes(satellite);
      for (uint32_t c = 0; c < satellites[s]->carriers.size(); ++c) {
        const Carrier& carrier = *satellites[s]->carriers[c];
        CarrierRecord record = carrier.record;
        record.lnb_index = 0;
        record.first_service = 0;
        record.service_count = 0;
        record.satellite_index = 0;
        all[{d, 1, s, c}] = bytes(record);
        for (uint32_t v = 0; v < carrier.services.size(); ++v) {
          ServiceRecord service = carrier.services[v]->record;
          service.carrier_index = 0;
          all[{d, 1, s, c, v}] = bytes(service);
        }
      }
    }
  }
  return all;
}

// Fields of random records change; every changed record is told, and no other.
TEST(RandomChanges, AreToldLikeASlowModelDoes) {
  std::mt19937 random(20);
  for (int round = 0; round < 60; ++round) {
    Document document = MakeRandomDocument(random);
    const DocumentMarks before = MarksOf(document);
    const auto sayings = Sayings(document);
    for (OpenSdb& sdb : document.sdbs) {
      for (Service* service : sdb.database->services)
        if (random() % 8 == 0) service->record.pcr_pid = random() & 0x3FFF;
      for (Carrier* carrier : sdb.database->carriers)
        if (random() % 8 == 0) carrier->record.frequency = static_cast<uint32_t>(random() % 20000);
    }
    std::map<TreePath, bool> expected, told;
    for (const auto& [path, saying] : Sayings(document))
      if (sayings.at(path) != saying) expected[path] = true;
    for (const ChangedRows& change : ChangesSince(before, document)) {
      // Entries follow the services that they name.
      if (change.parent.size() > 1 && change.parent[1] != kSatelliteLevelPosition) continue;
      EXPECT_EQ(ChangedNodes(document, change).size(), change.rows.size());
      for (const size_t row : change.rows) {
        TreePath path = change.parent;
        path.push_back(static_cast<uint32_t>(row));
        told[path] = true;
      }
    }
    ASSERT_EQ(told.size(), expected.size()) << "round " << round;
    ASSERT_TRUE(told == expected) << "round " << round;
  }
}

}  // namespace

}  // namespace vexa
