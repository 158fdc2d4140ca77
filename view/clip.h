// Records on the clipboard: with all that is below them, for other windows, SDBs and runs of the program; and
// as text in columns, for spreadsheets.
//
// Bytes of a clip
//    0  8  "VexaClip"
//    8  1  what it holds: 0 SDB, 1 LNBs, 2 satellites, 3 carriers, 4 services, 5 user boxes
//    9  1  number of LNBs
//   10  1  number of satellites
//   11     a container (core/bin_file.h) of one SDB, and user boxes
// Carriers and services stand below copies of what they belong to, LNBs below nothing.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/context.h"
#include "view/node_edit.h"

namespace vexa {

// The nodes, which are of one kind and one SDB; entries of favourite lists are the services that they name.
// Nothing, without a message, for nodes that are no records, and after the message of a failed compression.
std::optional<Bytes> CopyNodes(const Context& context, const Document& document,
                               const std::vector<NodeRef>& rows);
// Their rows of the table of their kind (import/csv_table.h), cells parted by tabs. Empty for nodes that no
// table has.
std::string TextOfNodes(const Document& document, const std::vector<NodeRef>& rows);

struct Pasted {
  size_t records = 0;     // of the clip's kind
  size_t renumbered = 0;  // services whose program number was taken on their carrier
  size_t other_lnbs = 0;  // satellites that use an LNB that is set otherwise than theirs was
  // Of services pasted into a favourite group; those that the SDB does not have did not fit.
  std::optional<GroupAddition> addition = {};
};
// Puts the records of the clip where a new one of their kind would go, at the tree's node or the list's row
// (of kind kNone: none): satellites and carriers behind a row of their kind, else at the end of their list
// (satellites before places that nobody uses, which make room for them). Services pasted into a favourite
// group enter its lists as far as the SDB has them. Satellites use an LNB that is set as theirs was, else the
// one of its number. Nothing after a message, with nothing changed: the clip is none, does not fit there, or
// a table would be too full.
std::optional<Pasted> PasteNodes(const Context& context, Document& document, const NodeRef& tree,
                                 const NodeRef& row, std::span<const uint8_t> clip);

}  // namespace vexa
