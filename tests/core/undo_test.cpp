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
  bool Rename(const char* name) {
    document.sdbs[0].name = name;
    return RecordChange(history, document);
  }
};

TEST_F(History, TheChangedMarkFollowsTheSavedState) {
  EXPECT_FALSE(IsChanged(history));
  EXPECT_FALSE(Rename("SDB1"));  // the same again is no change
  EXPECT_FALSE(CanUndo(history));
  EXPECT_TRUE(Rename("A"));
  EXPECT_TRUE(IsChanged(history));
  MarkSaved(history);
  Rename("B");
  EXPECT_TRUE(Undo(history, document));
  EXPECT_FALSE(IsChanged(history));
  EXPECT_TRUE(Undo(history, document));
  EXPECT_TRUE(IsChanged(history));
  EXPECT_TRUE(Redo(history, document));
  EXPECT_FALSE(IsChanged(history));
  EXPECT_EQ(document.sdbs[0].name, "A");
}

TEST_F(History, ASavedStateThatIsOverwrittenIsNeverReachedAgain) {
  Rename("A");
  MarkSaved(history);
  Undo(history, document);
  Rename("B");  // as many steps as at the save, and another state
  EXPECT_FALSE(CanRedo(history));
  EXPECT_TRUE(IsChanged(history));
  Undo(history, document);
  EXPECT_TRUE(IsChanged(history));
}

TEST_F(History, UntouchedSdbsKeepTheirRecords) {
  AddSdb({}, document);
  RecordChange(history, document);
  const StaticDatabase* second = document.sdbs[1].database.get();
  Rename("A");
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
