// The tree of the database window after a change: items that stand for the same records stay, with what is
// opened below them.
#include <algorithm>
#include <compare>
#include <set>

#include "core/messages.h"
#include "ui/editor_parts.h"
#include "ui/frame.h"

namespace vexa {

namespace {

// What a node stands for, as long as its record lives. Old keys are compared only: their records may be gone.
struct NodeKey {
  NodeKind kind = NodeKind::kNone;
  uint32_t slot = 0, index = 0;
  const void* record = nullptr;
  auto operator<=>(const NodeKey&) const = default;
};

NodeKey KeyOf(const std::vector<uint32_t>& slots, const NodeRef& node) {
  NodeKey key;
  key.kind = node.kind;
  const bool in_sdb = node.kind != NodeKind::kUbi && node.kind != NodeKind::kUbiLevel;
  if (in_sdb && node.sdb < slots.size()) key.slot = slots[node.sdb];
  switch (node.kind) {
    case NodeKind::kSatellite:
      key.record = node.satellite;
      break;
    case NodeKind::kCarrier:
      key.record = node.carrier;
      break;
    case NodeKind::kService:
      key.record = node.service;
      break;
    case NodeKind::kFavouriteTvEntry:
    case NodeKind::kFavouriteRadioEntry:
      key.record = node.service;
      key.index = node.group;
      break;
    case NodeKind::kLnb:
    case NodeKind::kTvGroup:
    case NodeKind::kRadioGroup:
    case NodeKind::kUbi:
      key.index = node.index;
      break;
    default:
      break;
  }
  return key;
}

std::vector<uint32_t> SlotsOf(const Document& document) {
  std::vector<uint32_t> slots;
  for (const OpenSdb& sdb : document.sdbs) slots.push_back(sdb.slot);
  return slots;
}

LPARAM ParameterOf(const EditorWindow& editor, HTREEITEM item) {
  TVITEMW asked{};
  asked.mask = TVIF_PARAM;
  asked.hItem = item;
  SendMessageW(editor.tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&asked));
  return asked.lParam;
}

UINT StateOf(const EditorWindow& editor, HTREEITEM item) {
  return TreeView_GetItemState(editor.tree, item, TVIS_EXPANDED | TVIS_EXPANDEDONCE);
}

class TreeSync {
 public:
  TreeSync(EditorWindow& editor, Records records)
      : editor_(editor),
        records_(records),
        old_slots_(editor.shown_slots),
        slots_(SlotsOf(editor.document)) {}

  // Nothing, or what to tell the user: the tree has not followed the database, which stays changed.
  const char* Run() {
    selected_ = KeyOf(old_slots_, editor_.selected);
    CollectOpened(TreeView_GetRoot(editor_.tree));
    editor_.refreshing = true;
    SyncChildren(TVI_ROOT, RootNodes(editor_.document));
    editor_.refreshing = false;
    editor_.shown_slots = slots_;
    for (const HTREEITEM item : to_open_) Reopen(item);
    if (selected_item_) TreeView_SelectItem(editor_.tree, selected_item_);
    return refusal_;
  }

 private:
  void CollectOpened(HTREEITEM first) {
    for (HTREEITEM item = first; item; item = TreeView_GetNextSibling(editor_.tree, item)) {
      const NodeRef node = NodeOf(editor_, ParameterOf(editor_, item));
      if (node.kind == NodeKind::kService) return;  // a leaf among leaves
      if (StateOf(editor_, item) & TVIS_EXPANDED) opened_.insert(KeyOf(old_slots_, node));
      CollectOpened(TreeView_GetChild(editor_.tree, item));
    }
  }

  bool Same(const NodeRef& old_node, const NodeRef& node) const {
    const bool root = node.kind == NodeKind::kSdb || node.kind == NodeKind::kUbiLevel;
    if (records_ == Records::kRebuilt && !root) return old_node.kind == node.kind;
    return KeyOf(old_slots_, old_node) == KeyOf(slots_, node);
  }

  void DeleteItem(HTREEITEM item, NodeKind kind) {
    if (TreeView_DeleteItem(editor_.tree, item)) return;
    if (kind == NodeKind::kSatellite) refusal_ = "Satellite record cannot be deleted.";
    if (kind == NodeKind::kCarrier) refusal_ = "Carrier record cannot be deleted.";
  }

  void SyncChildren(HTREEITEM parent, const std::vector<NodeRef>& fresh) {
    std::vector<HTREEITEM> items;
    std::vector<LPARAM> places;
    HTREEITEM item =
        parent == TVI_ROOT ? TreeView_GetRoot(editor_.tree) : TreeView_GetChild(editor_.tree, parent);
    for (; item; item = TreeView_GetNextSibling(editor_.tree, item)) {
      items.push_back(item);
      places.push_back(ParameterOf(editor_, item));
    }
    const size_t shorter = std::min(items.size(), fresh.size());
    size_t head = 0, tail = 0;
    const auto same_at = [&](size_t old_place, size_t place) {
      return Same(NodeOf(editor_, places[old_place]), fresh[place]);
    };
    while (head < shorter && same_at(head, head)) ++head;
    while (tail < shorter - head && same_at(items.size() - 1 - tail, fresh.size() - 1 - tail)) ++tail;
    // Between equal head and tail, items are used again for other records as far as there are.
    const size_t old_middle = items.size() - head - tail, middle = fresh.size() - head - tail;
    // From the last to the first: the control numbers anew what stands behind a deleted item.
    for (size_t i = old_middle; i > middle; --i)
      DeleteItem(items[head + i - 1], NodeOf(editor_, places[head + i - 1]).kind);
    for (size_t i = 0; i < fresh.size(); ++i) {
      const bool in_head = i < head + std::min(middle, old_middle), in_tail = i >= fresh.size() - tail;
      if (in_head || in_tail) {
        const size_t old_place = in_head ? i : i + items.size() - fresh.size();
        SyncItem(items[old_place], NodeOf(editor_, places[old_place]), fresh[i]);
        after_ = items[old_place];
      } else {
        after_ = InsertNode(editor_, parent, i == 0 ? TVI_FIRST : after_, fresh[i]);
        if (!after_) refusal_ = "Error No: -1 \n( Invalid Process ) Can't Add Information";
        Note(after_, fresh[i]);
        to_open_.push_back(after_);
      }
    }
  }

  void SyncItem(HTREEITEM item, NodeRef& shown, const NodeRef& node) {
    const bool same = Same(shown, node);
    shown = node;
    Note(item, node);
    if (!same) {
      TreeView_Expand(editor_.tree, item, TVE_COLLAPSE | TVE_COLLAPSERESET);
      to_open_.push_back(item);
      return;
    }
    const bool filled = TreeView_GetChild(editor_.tree, item) || (StateOf(editor_, item) & TVIS_EXPANDEDONCE);
    if (!filled) return;
    const HTREEITEM after = after_;
    SyncChildren(item, ChildNodes(editor_.document, node));
    after_ = after;
  }

  // The selection goes with its record; where records are known by place only, it stays where it is.
  void Note(HTREEITEM item, const NodeRef& node) {
    if (records_ == Records::kKept && KeyOf(slots_, node) == selected_) selected_item_ = item;
  }

  void Reopen(HTREEITEM item) {
    const NodeRef node = NodeOfItem(editor_, item);
    if (!opened_.contains(KeyOf(slots_, node)) || !HasChildNodes(editor_.document, node)) return;
    FillNode(editor_, item, node);
    TreeView_Expand(editor_.tree, item, TVE_EXPAND);
    if (node.kind == NodeKind::kCarrier) return;
    for (HTREEITEM child = TreeView_GetChild(editor_.tree, item); child;
         child = TreeView_GetNextSibling(editor_.tree, child))
      Reopen(child);
  }

  EditorWindow& editor_;
  Records records_;
  std::vector<uint32_t> old_slots_, slots_;
  std::set<NodeKey> opened_;
  std::vector<HTREEITEM> to_open_;
  NodeKey selected_;
  HTREEITEM selected_item_ = nullptr, after_ = nullptr;
  const char* refusal_ = nullptr;
};

// The list's selected rows by what they stand for and by their places.
struct KeptRows {
  std::set<NodeKey> selected;
  std::vector<bool> places;
  int focused = -1, top = 0;
};

KeptRows KeepRows(const EditorWindow& editor) {
  KeptRows kept;
  kept.places.resize(editor.rows.rows.size());
  for (const size_t row : SelectedRows(editor)) {
    if (row >= kept.places.size()) continue;
    kept.selected.insert(KeyOf(editor.shown_slots, editor.rows.rows[row]));
    kept.places[row] = true;
  }
  kept.focused = ListView_GetNextItem(editor.list, -1, LVNI_FOCUSED);
  kept.top = ListView_GetTopIndex(editor.list);
  return kept;
}

// New records may lie where old ones did: rows of rebuilt records are known again by their places, as long as
// there are as many as before.
void SelectKeptRows(EditorWindow& editor, const KeptRows& kept, Records records) {
  const auto& rows = editor.rows.rows;
  if (kept.selected.empty() || (records == Records::kRebuilt && rows.size() != kept.places.size())) return;
  const std::vector<uint32_t> slots = SlotsOf(editor.document);
  SelectRows(editor, [&](size_t row) {
    if (records == Records::kRebuilt) return bool{kept.places[row]};
    return row < rows.size() && kept.selected.contains(KeyOf(slots, rows[row]));
  });
}

void ShowKeptRows(EditorWindow& editor, const KeptRows& kept, Records records) {
  const auto count = static_cast<int>(editor.rows.size());
  if (count == 0) return;
  ListView_EnsureVisible(editor.list, count - 1, FALSE);
  ListView_EnsureVisible(editor.list, std::min(kept.top, count - 1), FALSE);
  SelectKeptRows(editor, kept, records);
  if (kept.focused >= 0)
    ListView_SetItemState(editor.list, std::min(kept.focused, count - 1), LVIS_FOCUSED, LVIS_FOCUSED);
}

}  // namespace

NodeRef& NodeOf(EditorWindow& editor, LPARAM parameter) {
  return editor.nodes[static_cast<size_t>(parameter)];
}

NodeRef NodeOfItem(EditorWindow& editor, HTREEITEM item) {
  return item ? NodeOf(editor, ParameterOf(editor, item)) : NodeRef{};
}

void OpenSelectedNode(EditorWindow& editor) {
  if (HTREEITEM item = TreeView_GetSelection(editor.tree)) TreeView_Expand(editor.tree, item, TVE_EXPAND);
}

void ReorderList(EditorWindow& editor, const RowOrder& order) {
  const KeptRows kept = KeepRows(editor);
  editor.order = order;
  RefreshList(editor);
  SelectKeptRows(editor, kept, Records::kKept);
  const int row = ListView_GetNextItem(editor.list, -1, LVNI_SELECTED);
  if (row < 0) return;
  ListView_SetItemState(editor.list, row, LVIS_FOCUSED, LVIS_FOCUSED);
  ListView_EnsureVisible(editor.list, row, FALSE);
}

void RefreshDocument(EditorWindow& editor, Records records) {
  const KeptRows kept = KeepRows(editor);
  SendMessageW(editor.tree, WM_SETREDRAW, FALSE, 0);
  SendMessageW(editor.list, WM_SETREDRAW, FALSE, 0);
  // Nothing may ask for the old rows any more.
  ListView_SetItemCountEx(editor.list, 0, 0);
  editor.rows.rows.clear();
  editor.details = false;
  const NodeKind shown = editor.selected.kind;
  const ListView view = editor.view;
  const RowOrder order = editor.order;
  editor.settled = false;
  const char* refusal = TreeSync(editor, records).Run();
  editor.settled = true;
  editor.selected = NodeOfItem(editor, TreeView_GetSelection(editor.tree));
  const bool same_kind = editor.selected.kind == shown;
  editor.view = same_kind ? view : ListView::kBelow;
  editor.order = same_kind ? order : RowOrder{};
  RefreshList(editor);
  ShowKeptRows(editor, kept, records);
  SendMessageW(editor.list, WM_SETREDRAW, TRUE, 0);
  SendMessageW(editor.tree, WM_SETREDRAW, TRUE, 0);
  InvalidateRect(editor.list, nullptr, TRUE);
  InvalidateRect(editor.tree, nullptr, TRUE);
  RefreshFrame(*editor.app);
  if (refusal) Tell(editor.app->context.messages, Icon::kStop, "%s", refusal);
}

}  // namespace vexa
