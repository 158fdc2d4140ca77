#include "core/undo.h"

#include <gtest/gtest.h>

#include "core/edit.h"
#include "core/sort.h"
#include "tests/support/random_database.h"

namespace vexa {
namespace {

struct History : testing::Test {
  Document document = NewDocument();
  UndoHistory history;
  History() { StartHistory(history, document); }
};

TEST_F(History, UntouchedSdbsKeepTheirRecords) {
  AddSdb({}, document);
  RecordChange(history, document);
  const StaticDatabase* second = document.sdbs[1].database.get();
  document.sdbs[0].name = "A";
  RecordChange(history, document);
  Undo(history, document);
  EXPECT_EQ(document.sdbs[1].database.get(), second);
  Undo(history, document);
  EXPECT_EQ(document.sdbs.size(), 1u);
  EXPECT_EQ(document.slot_mask, 1u);
}

TEST_F(History, AStepInALargeDatabaseIsSmall) {
  StaticDatabase& database = *document.sdbs[0].database;
  AddTestSatellite(database, "S");
  for (int i = 0; i < 200; ++i) AddTestCarrier(database, 0);
  for (size_t i = 0; i < 20000; ++i) AddTestService(database, database.carriers[i / 100]);
  RecordChange(history, document);
  InsertService({}, database, *database.carriers[20], {}, {50});
  DeleteServices(database, {database.carriers[90]->services[9]});
  ASSERT_TRUE(RecordChange(history, document));
  size_t size = 0;
  for (const PartChange& part : history.steps.back().parts)
    for (const TableChange& table : part.tables) size += table.packed.size();
  EXPECT_LT(size, 20000u);  // of about 800,000
}

}  // namespace
}  // namespace vexa
