#include "core/undo.h"

#include <zlib.h>

#include <algorithm>
#include <new>
#include <span>

#include "core/delta.h"
#include "core/undo_state.h"

namespace vexa {

namespace {

using Table = std::vector<uint8_t>;

Table Pack(const Table& content) {
  uLongf size = compressBound(static_cast<uLong>(content.size()));
  Table packed(size);
  if (compress2(packed.data(), &size, content.data(), static_cast<uLong>(content.size()), Z_BEST_SPEED) !=
      Z_OK)
    throw std::bad_alloc();  // zlib fails for nothing else here
  packed.resize(size);
  packed.shrink_to_fit();
  return packed;
}

Table Unpack(const Table& packed, size_t size) {
  Table content(size);
  auto length = static_cast<uLongf>(size);
  if (size > 0 &&
      uncompress(content.data(), &length, packed.data(), static_cast<uLong>(packed.size())) != Z_OK)
    throw std::bad_alloc();
  return content;
}

TableChange Compare(uint32_t number, const Table& before, const Table& after) {
  const Table back = MakeDelta(after, before);
  Table both = MakeDelta(before, after);
  TableChange change{number, before.size(), after.size(), back.size(), both.size(), {}};
  both.insert(both.end(), back.begin(), back.end());
  change.packed = Pack(both);
  return change;
}

void Apply(const TableChange& change, Table& table, bool forward) {
  const Table both = Unpack(change.packed, change.forth_size + change.back_size);
  const std::span<const uint8_t> deltas(both);
  table = forward ? ApplyDelta(table, deltas.first(change.forth_size), change.after_size)
                  : ApplyDelta(table, deltas.subspan(change.forth_size), change.before_size);
}

// An SDB that is not there has no tables: it is compared as if it had empty ones.
void ComparePart(uint32_t part, const StateTables& present, const StateTables& after,
                 std::vector<PartChange>& parts) {
  if (present == after) return;
  static const Table kNone;
  const auto table = [](const StateTables& tables, size_t i) -> const Table& {
    return i < tables.size() ? tables[i] : kNone;
  };
  PartChange change;
  change.part = part;
  for (uint32_t i = 0; i < std::max(present.size(), after.size()); ++i) {
    const Table &before = table(present, i), &now = table(after, i);
    if (before != now) change.tables.push_back(Compare(i, before, now));
  }
  parts.push_back(std::move(change));
}

void ApplyPart(const PartChange& change, StateTables& tables, bool forward) {
  if (tables.empty()) tables.resize(kSdbStateTables);  // the SDB was not there
  for (const TableChange& table : change.tables) Apply(table, tables.at(table.table), forward);
}

void ApplyStep(UndoHistory& history, const HistoryStep& step, Document& document, bool forward) {
  // On copies: the history changes at the end, when nothing can fail any more.
  std::vector<StateTables> states(step.parts.size());
  const auto present = [&history](uint32_t part) -> StateTables& {
    return part == kDocumentPart ? history.document : history.slots[part];
  };
  const auto state_of = [&](uint32_t part) -> const StateTables& {
    for (size_t i = 0; i < states.size(); ++i)
      if (step.parts[i].part == part) return states[i];
    return present(part);
  };
  for (size_t i = 0; i < states.size(); ++i) {
    states[i] = present(step.parts[i].part);
    ApplyPart(step.parts[i], states[i], forward);
  }
  std::vector<OpenSdb> old = std::move(document.sdbs);
  document.sdbs.clear();
  std::array<bool, kMaximumSdbs> used{};
  for (const uint32_t slot : SlotsOfState(state_of(kDocumentPart))) {
    used[slot] = true;
    const bool changed = std::any_of(step.parts.begin(), step.parts.end(),
                                     [&](const PartChange& part) { return part.part == slot; });
    const auto same =
        std::find_if(old.begin(), old.end(), [&](const OpenSdb& sdb) { return sdb.slot == slot; });
    if (changed || same == old.end()) {
      document.sdbs.push_back(RestoreSdb(state_of(slot), slot));
    } else {
      document.sdbs.push_back(std::move(*same));
    }
  }
  RestoreDocument(state_of(kDocumentPart), document);
  for (size_t i = 0; i < states.size(); ++i) present(step.parts[i].part).swap(states[i]);
  for (uint32_t slot = 0; slot < kMaximumSdbs; ++slot)
    if (!used[slot]) history.slots[slot].clear();
}

}  // namespace

void StartHistory(UndoHistory& history, const Document& document) {
  history = UndoHistory();
  history.document = DocumentState(document);
  for (const OpenSdb& sdb : document.sdbs) history.slots.at(sdb.slot) = SdbState(sdb);
}

bool RecordChange(UndoHistory& history, const Document& document, bool is_sort) {
  HistoryStep step;
  step.sort = is_sort;
  StateTables state = DocumentState(document);
  ComparePart(kDocumentPart, history.document, state, step.parts);
  std::array<StateTables, kMaximumSdbs> slots;
  for (const OpenSdb& sdb : document.sdbs) slots.at(sdb.slot) = SdbState(sdb);
  for (uint32_t slot = 0; slot < kMaximumSdbs; ++slot)
    ComparePart(slot, history.slots[slot], slots[slot], step.parts);
  if (step.parts.empty()) return false;
  history.steps.reserve(history.done + 1);
  history.document.swap(state);
  history.slots.swap(slots);
  history.steps.resize(history.done);
  if (history.saved && *history.saved > history.done) history.saved.reset();
  history.steps.push_back(std::move(step));
  ++history.done;
  ++history.turn;
  return true;
}

void RestoreState(const UndoHistory& history, Document& document) {
  const std::vector<uint32_t> slots = SlotsOfState(history.document);
  document.sdbs.clear();  // first, so that their memory is there for what takes their place
  for (const uint32_t slot : slots) document.sdbs.push_back(RestoreSdb(history.slots[slot], slot));
  RestoreDocument(history.document, document);
}

void MarkSaved(UndoHistory& history) {
  history.saved = history.done;
}

void MarkUnsaved(UndoHistory& history) {
  history.saved.reset();
  ++history.turn;
}

bool IsChanged(const UndoHistory& history) {
  return history.saved != history.done;
}

bool Undo(UndoHistory& history, Document& document) {
  if (!CanUndo(history)) return false;
  ApplyStep(history, history.steps[history.done - 1], document, false);
  --history.done;
  ++history.turn;
  return true;
}

bool Redo(UndoHistory& history, Document& document) {
  if (!CanRedo(history)) return false;
  ApplyStep(history, history.steps[history.done], document, true);
  ++history.done;
  ++history.turn;
  return true;
}

bool RevertToFirst(UndoHistory& history, Document& document) {
  if (!CanUndo(history)) return false;
  UndoHistory back = history;
  while (Undo(back, document)) {
  }
  RecordChange(history, document, false);
  return true;
}

bool UndoesSort(const UndoHistory& history) {
  return CanUndo(history) && history.steps[history.done - 1].sort;
}

}  // namespace vexa
