#include "core/undo.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>

#include "core/edit.h"
#include "core/sort.h"
#include "core/undo_state.h"
#include "tests/support/failing_memory.h"
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

// Every allocation of each function fails once: nothing is half done, and the next try works.
TEST_F(History, MemoryThatRunsOutLeavesTheHistoryAsItWas) {
  AddTestSatellite(*document.sdbs[0].database, "A");
  RecordChange(history, document);
  const auto state = [this] { return std::pair(DocumentState(document), SdbState(document.sdbs[0])); };
  const auto before = state();
  AddTestSatellite(*document.sdbs[0].database, "B");
  const auto after = state();
  const std::function<bool()> functions[] = {[this] { return RecordChange(history, document); },
                                             [this] { return Undo(history, document); },
                                             [this] { return Redo(history, document); }};
  for (size_t i = 0; i < std::size(functions); ++i) {
    const auto& start = i == 1 ? after : before;
    const size_t done = history.done, steps = history.steps.size();
    bool worked = false;
    for (int n = 1; !worked; ++n) {
      SCOPED_TRACE(testing::Message() << "function " << i << ", allocation " << n);
      try {
        const FailingMemory failing(n);
        worked = functions[i]();
      } catch (const std::bad_alloc&) {
        EXPECT_EQ(history.done, done);
        EXPECT_EQ(history.steps.size(), steps);
        RestoreState(history, document);
        ASSERT_EQ(state(), start);
        EXPECT_EQ(CheckLinks(*document.sdbs[0].database), "");
        if (i == 0) AddTestSatellite(*document.sdbs[0].database, "B");
      }
      ASSERT_LT(n, 10000);
    }
    EXPECT_EQ(state(), i == 1 ? before : after);
  }
}

}  // namespace
}  // namespace vexa
