// Undo and redo of whatever changed a document, without limit.
//
// The history keeps the document's present state as plain bytes and, for each step, what turns those bytes
// into the state before or after. Steps are taken by comparing states, so that every operation can be undone
// without knowing it, and a step costs the bytes that changed, compressed.
//
// An undo or redo builds the SDBs that differ anew: pointers into them end there. Other SDBs keep their
// records.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "core/database.h"

namespace vexa {

// One table of a state, before and after.
struct TableChange {
  uint32_t table = 0;
  size_t before_size = 0, after_size = 0;  // of the table
  size_t back_size = 0, forth_size = 0;    // of the two deltas (delta.h)
  std::vector<uint8_t> packed;             // both, compressed
};

inline constexpr uint32_t kDocumentPart = 0xFFFFFFFF;  // else a slot number

struct PartChange {
  uint32_t part = kDocumentPart;
  std::vector<TableChange> tables;
};

struct HistoryStep {
  std::vector<PartChange> parts;
  bool sort = false;
};

using StateTables = std::vector<std::vector<uint8_t>>;  // the tables of one part

struct UndoHistory {
  StateTables document;                         // present state of what is no SDB
  std::array<StateTables, kMaximumSdbs> slots;  // of each SDB, by slot; empty: the slot is free
  std::vector<HistoryStep> steps;
  size_t done = 0;    // steps before this one are undone by Undo, the others redone by Redo
  uint64_t turn = 0;  // another number for every state that the document was brought to
  std::optional<size_t> saved =
      0;  // value of `done` at which the document equals its file; none: unreachable
};

// Forgets all steps; the document's present state counts as saved.
void StartHistory(UndoHistory& history, const Document& document);
// To be called after each operation. Takes a step when anything changed since the last call; steps that were
// undone are gone then. Returns whether anything changed.
bool RecordChange(UndoHistory& history, const Document& document, bool is_sort = false);
// The present state equals the document's file.
void MarkSaved(UndoHistory& history);
// The present state has no file: an import, a download.
void MarkUnsaved(UndoHistory& history);
// Whether the document differs from its file.
bool IsChanged(const UndoHistory& history);

// When memory runs out in one of these functions, the history is as it was; the document may be anything, as
// after an operation that broke off. RestoreState makes it what the history last saw; it builds all SDBs
// anew.
void RestoreState(const UndoHistory& history, Document& document);

// Takes back the last step that `RecordChange` took. False when there is none.
bool Undo(UndoHistory& history, Document& document);
// Does again the step that was taken back last. False when there is none.
bool Redo(UndoHistory& history, Document& document);
// Brings back the document that the history started with, as a step of its own, which Undo takes back. False
// when there is no step behind it.
bool RevertToFirst(UndoHistory& history, Document& document);
// Whether Undo, or Redo, has a step to go.
inline bool CanUndo(const UndoHistory& history) {
  return history.done > 0;
}
inline bool CanRedo(const UndoHistory& history) {
  return history.done < history.steps.size();
}
// Whether the change that Undo takes back next was a sort; false when there is none.
bool UndoesSort(const UndoHistory& history);

}  // namespace vexa
