#include "core/undo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <new>
#include <random>

#include "core/delta.h"
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

TEST_F(History, TheOriginalComesBackAsAStep) {
  EXPECT_FALSE(RevertToFirst(history, document));
  std::vector<StateTables> states = {DocumentState(document)};
  for (const char* name : {"A", "B"}) {
    document.sdbs[0].name = name;
    AddSdb({}, document);
    RecordChange(history, document);
    states.push_back(DocumentState(document));
  }
  MarkSaved(history);
  const uint64_t turn = history.turn;
  ASSERT_TRUE(RevertToFirst(history, document));
  EXPECT_EQ(DocumentState(document), states[0]);
  EXPECT_TRUE(IsChanged(history));
  EXPECT_NE(history.turn, turn);
  Undo(history, document);
  EXPECT_EQ(DocumentState(document), states[2]);
  EXPECT_FALSE(IsChanged(history));
  Redo(history, document);
  EXPECT_EQ(DocumentState(document), states[0]);
}

size_t SizeOf(const UndoHistory& history) {
  size_t size = 0;
  for (const HistoryStep& step : history.steps)
    for (const PartChange& part : step.parts)
      for (const TableChange& table : part.tables) size += sizeof table + table.packed.size();
  return size;
}

// 650 carriers of 100 services; what is put in, taken out or moved in the middle costs a few records.
TEST_F(History, AStepInALargeDatabaseIsSmall) {
  StaticDatabase& database = *document.sdbs[0].database;
  AddTestSatellite(database, "S");
  for (int i = 0; i < 650; ++i) AddTestCarrier(database, 0);
  for (size_t i = 0; i < 65000; ++i) {
    Service* service = AddTestService(database, database.carriers[i / 100]);
    SetName(service->record.name, "Service " + std::to_string(i * 7919 % 65000));
  }
  StartHistory(history, document);
  for (size_t i = 0; i < 5; ++i) {
    Satellite& satellite = *database.satellites[0];
    InsertService({}, database, *satellite.carriers[20 * i], {}, {3 + 10 * i});
    ASSERT_TRUE(RecordChange(history, document));
    InsertCarrier({}, database, satellite, {}, {7 * i});
    ASSERT_TRUE(RecordChange(history, document));
    DeleteServices(database, {satellite.carriers[300]->services[9], satellite.carriers[90 + i]->services[9]});
    ASSERT_TRUE(RecordChange(history, document));
    MoveServices({}, database, *satellite.carriers[400], {10, 11}, "80");
    ASSERT_TRUE(RecordChange(history, document));
  }
  EXPECT_LT(SizeOf(history), 20u * 1500);
}

TEST(Delta, MakesTheTargetAgain) {
  std::mt19937 random(7);
  const auto upto = [&](size_t highest) { return std::uniform_int_distribution<size_t>(0, highest)(random); };
  for (int i = 0; i < 2000; ++i) {
    std::vector<uint8_t> source(upto(400));
    const size_t letters = upto(1) == 0 ? 255 : 1;  // also what repeats itself
    for (uint8_t& byte : source) byte = static_cast<uint8_t>(upto(letters));
    std::vector<uint8_t> target = source;
    for (size_t edits = upto(4); edits-- > 0;) {
      const auto place = [&] { return target.begin() + static_cast<std::ptrdiff_t>(upto(target.size())); };
      auto first = place(), last = place();
      if (last < first) std::swap(first, last);
      const size_t kind = upto(3);
      if (kind == 0) target.erase(first, last);
      if (kind == 1) std::rotate(target.begin(), first, last);
      if (kind == 2) target.insert(first, upto(40), static_cast<uint8_t>(upto(255)));
      if (kind == 3 && first != target.end()) *first ^= 1;
    }
    ASSERT_EQ(ApplyDelta(source, MakeDelta(source, target), target.size()), target) << i;
  }
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
