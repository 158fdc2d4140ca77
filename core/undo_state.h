// A document as plain bytes and back, for the undo history.
//
// A state is a list of tables, each of one kind of thing, so that a change shows up in few of them.
// References are places in the SDB's arrays, written as the difference to the entry before (u16, modulo
// 65536): a record put in between leaves the entries behind it as they were. What follows from the links is
// not kept: satellite indices and carrier positions.
#pragma once

#include <cstdint>
#include <vector>

#include "core/undo.h"

namespace vexa {

inline constexpr size_t kSdbStateTables = 12;

// The tables of everything but the SDBs' content: slots in tree order, flags and settings, user boxes.
StateTables DocumentState(const Document& document);
// The tables of one SDB, kSdbStateTables of them.
StateTables SdbState(const OpenSdb& sdb);

// Slots of the SDBs in tree order, from a document's state.
std::vector<uint32_t> SlotsOfState(const StateTables& state);
// Sets everything of the document but its SDBs; nothing when memory runs out on the way.
void RestoreDocument(const StateTables& state, Document& document);
// The SDB that SdbState told, built anew, in this slot.
OpenSdb RestoreSdb(const StateTables& state, uint32_t slot);

}  // namespace vexa
