#include "view/window_state.h"

#include "view/node_edit.h"

namespace vexa {

namespace {

struct ActionNeed {
  NodeAction action;
  Need need;
};
constexpr ActionNeed kActionNeeds[] = {{NodeAction::kEdit, kNeedsEditable},
                                       {NodeAction::kInsert, kNeedsInsertable},
                                       {NodeAction::kDelete, kNeedsDeletable},
                                       {NodeAction::kMove, kNeedsMovable}};

uint32_t RecordNeeds(const DatabaseLook& look) {
  uint32_t present = kNeedsNothing;
  for (const ActionNeed& row : kActionNeeds) {
    if (NodeTakes(look.record.kind, row.action)) present |= row.need;
  }
  if (NodeTakes(NodeToAddAt(look.selected, look.row).kind, NodeAction::kAdd)) present |= kNeedsAddable;
  if (HasView(look.selected.kind, ListView::kServices)) present |= kNeedsViews;
  if (HasView(look.selected.kind, ListView::kCarriers)) present |= kNeedsCarrierView;
  if (look.has_rows) present |= kNeedsRows;
  if (look.has_rows && look.ordered) present |= kNeedsRowOrder;
  const NodeKind kind = look.record.kind;
  if (look.details || HasDetails(kind == NodeKind::kNone ? look.selected.kind : kind))
    present |= kNeedsDetails;
  if (kind == NodeKind::kFavouriteTvEntry || kind == NodeKind::kFavouriteRadioEntry) present |= kNeedsEntry;
  if (kind == NodeKind::kSatellite ||
      (kind == NodeKind::kSatelliteLevel && HasChildNodes(look.document, look.record)))
    present |= kNeedsSatellite;
  return present;
}

}  // namespace

void SeeDatabase(WindowState& state, const DatabaseLook& look) {
  const OpenSdb* sdb = SdbOf(look.document, look.selected);
  state.present |= kNeedsEditor | RecordNeeds(look);
  if (CanUndo(look.history)) state.present |= kNeedsUndo;
  if (CanRedo(look.history)) state.present |= kNeedsRedo;
  if (sdb && !IsAmongUbis(look.selected)) state.present |= kNeedsSdb;
  state.details = look.details;
  if (HasViews(look.selected.kind) && !look.details) state.view = ViewShown(look.selected.kind, look.view);
  state.payload_compressed = look.document.compress_payload;
  state.part_compressed =
      IsAmongUbis(look.selected) ? look.document.compress_ubis : sdb && sdb->database->compressed;
  state.can_undo_other = CanUndo(look.history) && !UndoesSort(look.history);
}

bool IsAmongUbis(const NodeRef& node) {
  return node.kind == NodeKind::kUbiLevel || node.kind == NodeKind::kUbi;
}

const OpenSdb* SdbOf(const Document& document, const NodeRef& node) {
  const size_t place = node.kind == NodeKind::kNone || IsAmongUbis(node) ? 0 : node.sdb;
  return place < document.sdbs.size() ? &document.sdbs[place] : nullptr;
}

}  // namespace vexa
