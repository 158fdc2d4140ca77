// The tree of the database window after a change: items that stand for the same records stay, with what is
// opened below them.
#include <algorithm>
#include <compare>
#include <functional>
#include <set>

#include "core/messages.h"
#include "ui/editor/editor_parts.h"

namespace vexa {

namespace {

// What a node stands for, as long as its record lives. Old keys are compared only: their records may be gone.
// Those of rebuilt records hold what they and the record above say instead.
struct NodeKey {
  NodeKind kind = NodeKind::kNone;
  uint32_t slot = 0, index = 0;
  const void* record = nullptr;
  uint64_t content = 0, above = 0;
  auto operator<=>(const NodeKey&) const = default;
};

NodeKey KeyOf(const std::vector<uint32_t>& slots, const NodeRef& node) {
  NodeKey key;
  key.kind = node.kind;
  const bool in_sdb = !IsAmongUbis(node);
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

std::vector<NodeRef> NodesBelow(const Document& document, const TreeNode& node) {
  return node.parent ? ChildNodes(document, node.ref) : RootNodes(document);
}

void NoteContentsBelow(const TreeNode& node) {
  std::vector<NodeRef> refs;
  refs.reserve(node.children.size());
  for (const auto& child : node.children) refs.push_back(child->ref);
  const std::vector<uint64_t> contents = NodeContents(refs);
  for (size_t i = 0; i < contents.size(); ++i) {
    node.children[i]->content = contents[i];
    NoteContentsBelow(*node.children[i]);
  }
}

std::unique_ptr<TreeNode> NewNode(TreeNode& parent, const NodeRef& ref) {
  auto node = std::make_unique<TreeNode>();
  node->ref = ref;
  node->parent = &parent;
  return node;
}

bool InsertItem(const EditorWindow& editor, TreeNode& node, HTREEITEM after) {
  TVINSERTSTRUCTW insert{};
  insert.hParent = node.parent->item;
  insert.hInsertAfter = after;
  insert.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_CHILDREN | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_STATE;
  insert.item.stateMask = TVIS_EXPANDED;
  insert.item.state = node.expanded ? TVIS_EXPANDED : 0;
  insert.item.pszText = LPSTR_TEXTCALLBACKW;
  insert.item.lParam = reinterpret_cast<LPARAM>(&node);
  insert.item.cChildren = I_CHILDRENCALLBACK;
  insert.item.iImage = insert.item.iSelectedImage = I_IMAGECALLBACK;
  node.item = reinterpret_cast<HTREEITEM>(
      SendMessageW(editor.tree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
  return node.item != nullptr;
}

// Which new nodes are made as opened ones. Of records built anew what they say is known when it is asked.
using Opens = std::function<bool(const TreeNode&)>;

// The control goes through all opened items when drawing is turned on again: it is left on.
void FillNodeWith(EditorWindow& editor, TreeNode& node, Records records, const Opens& opens) {
  if (!node.children.empty()) return;
  const std::vector<NodeRef> refs = NodesBelow(editor.document, node);
  std::vector<uint64_t> contents(refs.size());
  if (records == Records::kRebuilt) contents = NodeContents(refs);
  for (size_t i = 0; i < refs.size(); ++i) {
    auto child = NewNode(node, refs[i]);
    child->content = contents[i];
    child->expanded = opens(*child);
    if (!InsertItem(editor, *child, TVI_LAST)) return;
    node.children.push_back(std::move(child));
  }
}

// The node, which is closed, and all below it that are to be opened, filled. A level after the other: Wine's
// control looks for a new item's parent among all items, from the oldest on.
std::vector<TreeNode*> FillLevels(EditorWindow& editor, TreeNode& top, Records records, const Opens& opens) {
  std::vector<TreeNode*> nodes{&top};
  for (size_t i = 0; i < nodes.size(); ++i) {
    FillNodeWith(editor, *nodes[i], records, opens);
    for (const auto& child : nodes[i]->children) {
      if (opens(*child)) nodes.push_back(child.get());
    }
  }
  return nodes;
}

TreeNode* NodeBehind(const EditorWindow& editor, HTREEITEM item) {
  if (!item) return nullptr;
  TVITEMW asked{};
  asked.mask = TVIF_PARAM;
  asked.hItem = item;
  if (!SendMessageW(editor.tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&asked))) return nullptr;
  return &NodeOf(asked.lParam);
}

// More changes than these below one node cost more than filling it anew: the control goes through everything
// that is opened for each of them.
constexpr size_t kManyChanges = 64;

// Going through more items than these for one is felt.
constexpr size_t kManyItems = 4000;

// How many items in sight a node has with all below it, counted up to the limit.
size_t ItemsOf(const TreeNode& node, size_t limit) {
  size_t count = 1;
  if (!node.expanded) return count;
  for (const auto& child : node.children) {
    if (count >= limit) break;
    count += ItemsOf(*child, limit - count);
  }
  return count;
}

// Brings the nodes into line first and then the control, which may ask for their texts meanwhile.
class TreeSync {
 public:
  TreeSync(EditorWindow& editor, Records records)
      : editor_(editor),
        records_(records),
        old_slots_(editor.shown_slots),
        slots_(SlotsOf(editor.document)),
        selected_(KeyOf(old_slots_, editor.selected)) {}

  // Nothing, or what to tell the user: the tree has not followed the database, which stays changed.
  const char* Run() {
    const Place selected = PlaceOf(TreeView_GetSelection(editor_.tree)), top = PlaceOf(FirstVisible());
    CollectOpened(editor_.root);
    Update(editor_.root);
    editor_.shown_slots = slots_;
    for (TreeNode* node : emptied_) RemoveItemsBelow(*node);
    for (auto& node : gone_) DeleteItem(node);
    AddItems();
    for (TreeNode* node : to_open_) Reopen(*node);
    ScrollTo(NodeAt(top));
    if (records_ == Records::kRebuilt) wanted_ = InSight(NodeAt(selected));
    if (wanted_ && wanted_->item && wanted_->item != TreeView_GetSelection(editor_.tree))
      TreeView_SelectItem(editor_.tree, wanted_->item);
    return refusal_;
  }

 private:
  static uint32_t PositionOf(const TreeNode& node) {
    const auto& nodes = node.parent->children;
    const auto found =
        std::find_if(nodes.begin(), nodes.end(), [&](const auto& n) { return n.get() == &node; });
    return static_cast<uint32_t>(found - nodes.begin());
  }

  // Where a node is: each on the way to it by what it stands for and, if that is gone, by its position.
  struct Step {
    NodeKey key;
    size_t position;
  };
  using Place = std::vector<Step>;

  Place PlaceOf(HTREEITEM item) const {
    Place place;
    const TreeNode* node = NodeBehind(editor_, item);
    for (; node && node->parent; node = node->parent)
      place.insert(place.begin(), {KeyOfNode(old_slots_, *node), PositionOf(*node)});
    return place;
  }

  HTREEITEM FirstVisible() const { return TreeView_GetNextItem(editor_.tree, nullptr, TVGN_FIRSTVISIBLE); }

  // The node itself, or the topmost closed one above it: selecting what is below a closed node opens that.
  static TreeNode* InSight(TreeNode* node) {
    for (TreeNode* above = node; above; above = above->parent) {
      if (above->parent && above->parent->parent && !above->parent->expanded) node = above->parent;
    }
    return node;
  }

  // The user goes on seeing what was seen, as far as it is there and open.
  void ScrollTo(TreeNode* node) {
    node = InSight(node);
    if (node && node->item && node->item != FirstVisible())
      TreeView_Select(editor_.tree, node->item, TVGN_FIRSTVISIBLE);
  }

  // Wine's control loses its first visible item, and itself with it, when that goes together with what is
  // above it: the one above takes its place first.
  void LeaveItemsBelow(const TreeNode& node) {
    const TreeNode* first = NodeBehind(editor_, FirstVisible());
    for (; first && first != &node; first = first->parent) {
      if (first->parent == &node) TreeView_Select(editor_.tree, node.item, TVGN_FIRSTVISIBLE);
    }
  }

  // As far along the way as there are nodes; at the last one where there are fewer.
  TreeNode* NodeAt(const Place& place) const {
    TreeNode* node = &editor_.root;
    for (const Step& step : place) {
      const auto& nodes = node->children;
      if (nodes.empty()) break;
      const auto found = std::find_if(nodes.begin(), nodes.end(),
                                      [&](const auto& n) { return KeyOfNode(slots_, *n) == step.key; });
      node = found != nodes.end() ? found->get() : nodes[std::min(step.position, nodes.size() - 1)].get();
    }
    return node->parent ? node : nullptr;
  }

  NodeKey KeyIn(const std::vector<uint32_t>& slots, const NodeRef& ref, uint64_t content,
                uint64_t above) const {
    NodeKey key = KeyOf(slots, ref);
    if (records_ == Records::kKept) return key;
    key.record = nullptr;
    key.content = content;
    key.above = above;
    return key;
  }
  NodeKey KeyOfNode(const std::vector<uint32_t>& slots, const TreeNode& node) const {
    return KeyIn(slots, node.ref, node.content, node.parent->content);
  }

  void CollectOpened(const TreeNode& node) {
    if (node.parent && node.expanded) opened_.insert(KeyOfNode(old_slots_, node));
    for (const auto& child : node.children) CollectOpened(*child);
  }

  bool Same(const TreeNode& old_node, const NodeRef& node, uint64_t content) const {
    return KeyIn(old_slots_, old_node.ref, old_node.content, 0) == KeyIn(slots_, node, content, 0);
  }

  // Which nodes stay though their records, built anew, say something else: those that say what none said
  // before, where the record that is no more was.
  std::vector<bool> Altered(const TreeNode& parent, const std::vector<uint64_t>& contents) const {
    const auto& nodes = parent.children;
    std::vector<bool> altered(contents.size());
    if (records_ == Records::kKept || nodes.size() != contents.size()) return altered;
    std::set<uint64_t> before;
    for (const auto& node : nodes) before.insert(node->content);
    const std::set<uint64_t> after(contents.begin(), contents.end());
    for (size_t i = 0; i < contents.size(); ++i)
      altered[i] = !before.contains(contents[i]) && !after.contains(nodes[i]->content);
    return altered;
  }

  // Between equal head and tail, nodes are used again for other records as far as there are.
  void Update(TreeNode& parent) {
    auto& nodes = parent.children;
    const std::vector<NodeRef> fresh = NodesBelow(editor_.document, parent);
    const std::vector<uint64_t> contents =
        records_ == Records::kRebuilt ? NodeContents(fresh) : std::vector<uint64_t>(fresh.size());
    const size_t shorter = std::min(nodes.size(), fresh.size());
    const bool many = std::max(nodes.size(), fresh.size()) - shorter > kManyChanges;
    if (parent.parent && (many || nodes.empty())) {
      if (parent.expanded) opened_.insert(KeyOfNode(slots_, parent));
      Empty(parent);
      return;
    }
    const std::vector<bool> altered = Altered(parent, contents);
    size_t head = 0, tail = 0;
    while (head < shorter && Same(*nodes[head], fresh[head], contents[head])) ++head;
    while (tail < shorter - head) {
      const size_t last = fresh.size() - 1 - tail;
      if (!Same(*nodes[nodes.size() - 1 - tail], fresh[last], contents[last])) break;
      ++tail;
    }
    while (nodes.size() > fresh.size()) {
      Drop(std::move(nodes[nodes.size() - 1 - tail]));
      nodes.erase(nodes.end() - 1 - static_cast<std::ptrdiff_t>(tail));
    }
    // Behind a long tail, whose nodes each take the record before: the control goes through all that follows
    // an item put between others.
    if (nodes.size() < fresh.size() && tail > kManyChanges) tail = 0;
    while (nodes.size() < fresh.size()) {
      const size_t place = nodes.size() - tail;
      nodes.insert(nodes.end() - static_cast<std::ptrdiff_t>(tail), NewNode(parent, fresh[place]));
      added_.push_back(nodes[place].get());
      to_open_.push_back(nodes[place].get());
    }
    for (size_t i = 0; i < fresh.size(); ++i) {
      const bool same = !nodes[i]->item || altered[i] || Same(*nodes[i], fresh[i], contents[i]);
      UpdateNode(*nodes[i], fresh[i], contents[i], same);
    }
  }

  void UpdateNode(TreeNode& node, const NodeRef& fresh, uint64_t content, bool same) {
    node.ref = fresh;
    node.content = content;
    Note(node);
    if (!same)
      Empty(node);
    else if (!node.children.empty() || node.expanded)
      Update(node);
  }

  // Its children go, to come again with the records that are now below it if it was opened or is to be.
  void Empty(TreeNode& node) {
    const bool filled = node.expanded || !node.children.empty();
    if (filled) emptied_.push_back(&node);
    for (auto& child : node.children) Forget(*child);
    to_open_.push_back(&node);
  }

  // The control may still ask for the node, whose record is gone.
  void Drop(std::unique_ptr<TreeNode> node) {
    Forget(*node);
    gone_.push_back(std::move(node));
  }
  static void Forget(TreeNode& node) {
    node.ref = {};
    for (auto& child : node.children) Forget(*child);
  }

  void RemoveItemsBelow(TreeNode& node) {
    LeaveItemsBelow(node);
    TreeView_Expand(editor_.tree, node.item, TVE_COLLAPSE | TVE_COLLAPSERESET);
    while (HTREEITEM left = TreeView_GetChild(editor_.tree, node.item)) {
      if (!TreeView_DeleteItem(editor_.tree, left)) return;  // its node must live as long
    }
    node.children.clear();
    node.expanded = false;
  }

  void DeleteItem(std::unique_ptr<TreeNode>& node) {
    LeaveItemsBelow(*node);
    if (TreeView_DeleteItem(editor_.tree, node->item)) return;
    TreeNode& parent = *node->parent;
    if (parent.ref.kind == NodeKind::kSatelliteLevel) refusal_ = "Satellite record cannot be deleted.";
    if (parent.ref.kind == NodeKind::kSatellite) refusal_ = "Carrier record cannot be deleted.";
    parent.children.push_back(std::move(node));
  }

  static bool ManyItemsBehind(const TreeNode& node) {
    size_t count = 0;
    for (const TreeNode* at = &node; at->parent; at = at->parent) {
      const auto& nodes = at->parent->children;
      for (size_t i = PositionOf(*at) + 1; i < nodes.size() && count < kManyItems; ++i)
        count += ItemsOf(*nodes[i], kManyItems - count);
    }
    return count >= kManyItems;
  }

  // Wine's control marks every item in sight behind a new one for painting. Below a closed node it does not,
  // but measures all that is opened there anew when the node is opened again.
  void AddItems() {
    std::set<TreeNode*> closed;
    for (TreeNode* node : added_) {
      TreeNode& parent = *node->parent;
      if (parent.expanded && !closed.contains(&parent) && ManyItemsBehind(*node)) {
        closed.insert(&parent);
        TreeView_Expand(editor_.tree, parent.item, TVE_COLLAPSE);
      }
      AddItem(*node);
    }
    for (TreeNode* node : closed) TreeView_Expand(editor_.tree, node->item, TVE_EXPAND);
  }

  void AddItem(TreeNode& node) {
    auto& siblings = node.parent->children;
    const size_t position = PositionOf(node);
    HTREEITEM after = position == 0 ? TVI_FIRST : siblings[position - 1]->item;
    if (position + 1 == siblings.size()) after = TVI_LAST;
    if (InsertItem(editor_, node, after)) return;
    refusal_ = "Error No: -1 \n( Invalid Process ) Can't Add Information";
    Drop(std::move(siblings[position]));
    siblings.erase(siblings.begin() + static_cast<std::ptrdiff_t>(position));
  }

  // The selection goes with its record, wherever that went.
  void Note(TreeNode& node) {
    if (records_ == Records::kKept && KeyOf(slots_, node.ref) == selected_) wanted_ = &node;
  }

  bool WasOpened(const TreeNode& node) const { return opened_.contains(KeyOfNode(slots_, node)); }

  // What was opened without children is open as soon as it has some again.
  void Reopen(TreeNode& node) {
    if (!WasOpened(node)) return;
    const auto filled =
        FillLevels(editor_, node, records_, [&](const TreeNode& child) { return WasOpened(child); });
    ExpandNode(editor_, node);
    node.expanded = true;
    for (TreeNode* parent : filled) {
      for (auto& child : parent->children) Note(*child);
    }
  }

  EditorWindow& editor_;
  Records records_;
  std::vector<uint32_t> old_slots_, slots_;
  NodeKey selected_;
  TreeNode* wanted_ = nullptr;  // to be selected
  std::set<NodeKey> opened_;
  std::vector<TreeNode*> emptied_, added_, to_open_;
  std::vector<std::unique_ptr<TreeNode>> gone_;
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

void NoteContents(EditorWindow& editor) {
  NoteContentsBelow(editor.root);
}

TreeNode& NodeOf(LPARAM parameter) {
  return *reinterpret_cast<TreeNode*>(parameter);
}

NodeRef NodeOfItem(const EditorWindow& editor, HTREEITEM item) {
  const TreeNode* node = NodeBehind(editor, item);
  return node ? node->ref : NodeRef{};
}

void FillNode(EditorWindow& editor, TreeNode& node) {
  FillNodeWith(editor, node, Records::kKept, [](const TreeNode&) { return false; });
}

// Wine's control measures every item that is opened, even when the node was open already.
void ExpandNode(EditorWindow& editor, TreeNode& node) {
  FillNode(editor, node);
  if (!(TreeView_GetItemState(editor.tree, node.item, TVIS_EXPANDED) & TVIS_EXPANDED))
    TreeView_Expand(editor.tree, node.item, TVE_EXPAND);
  node.expanded = !node.children.empty();
}

void OpenSelectedNode(EditorWindow& editor) {
  if (TreeNode* node = NodeBehind(editor, TreeView_GetSelection(editor.tree))) ExpandNode(editor, *node);
}

// Nodes that were closed are opened from the leaves up, below a closed node: the control goes through
// everything in sight for each.
void OpenAllBelow(EditorWindow& editor) {
  TreeNode* node = NodeBehind(editor, TreeView_GetSelection(editor.tree));
  if (!node) return;
  const WaitPointer wait;
  TreeView_Expand(editor.tree, node->item, TVE_COLLAPSE);
  node->expanded = false;
  const auto opened = FillLevels(editor, *node, Records::kKept, [&](const TreeNode& child) {
    return HasChildNodes(editor.document, child.ref);
  });
  for (size_t i = opened.size(); i-- > 0;) {
    if (!opened[i]->expanded) ExpandNode(editor, *opened[i]);
  }
}

void FillTree(EditorWindow& editor) {
  editor.root.item = TVI_ROOT;
  editor.shown_slots = SlotsOf(editor.document);
  FillNode(editor, editor.root);
  if (editor.root.children.empty()) return;
  TreeNode& first = *editor.root.children.front();
  TreeView_SelectItem(editor.tree, first.item);
  ExpandNode(editor, first);
}

void ShowAnew(EditorWindow& editor) {
  editor.settled = false;
  ListView_SetItemCountEx(editor.list, 0, 0);
  editor.rows.rows.clear();
  editor.details = false;
  TreeView_DeleteAllItems(editor.tree);
  editor.root.children.clear();
  editor.selected = {};
  editor.settled = true;
  SendMessageW(editor.list, WM_SETREDRAW, TRUE, 0);
  FillTree(editor);
  InvalidateRect(editor.list, nullptr, TRUE);
  InvalidateRect(editor.tree, nullptr, TRUE);
}

namespace {

// The list is made anew and keeps its selection, of which the first row stays in sight.
void RefreshRows(EditorWindow& editor, const KeptRows& kept) {
  RefreshList(editor);
  SelectKeptRows(editor, kept, Records::kKept);
  editor.app->refresh_frame();
  const int row = ListView_GetNextItem(editor.list, -1, LVNI_SELECTED);
  if (row < 0) return;
  ListView_SetItemState(editor.list, row, LVIS_FOCUSED, LVIS_FOCUSED);
  ListView_EnsureVisible(editor.list, row, FALSE);
}

}  // namespace

void ReorderList(EditorWindow& editor, const RowOrder& order) {
  const KeptRows kept = KeepRows(editor);
  editor.order = order;
  RefreshRows(editor, kept);
}

void ApplyFilter(EditorWindow& editor) {
  KillTimer(editor.window, kFilterTimer);
  const KeptRows kept = KeepRows(editor);
  editor.filter = ParseFilter(WindowText(editor.filter_field));
  RefreshRows(editor, kept);
}

bool EndFilter(EditorWindow& editor) {
  if (GetWindowTextLengthW(editor.filter_field) == 0) return false;
  SetText(editor.filter_field, "");  // which is told like typing; long lists follow later only
  if (!editor.filter.terms.empty()) ApplyFilter(editor);
  return true;
}

void RefreshDocument(EditorWindow& editor, Records records) {
  const KeptRows kept = KeepRows(editor);
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
  const bool follows = RefreshList(editor);
  ShowKeptRows(editor, kept, records);
  SendMessageW(editor.list, WM_SETREDRAW, TRUE, 0);
  InvalidateRect(editor.list, nullptr, TRUE);
  InvalidateRect(editor.tree, nullptr, TRUE);
  editor.app->refresh_frame();
  if (refusal) Tell(editor.app->context.messages, Icon::kStop, "%s", refusal);
  if (!follows) editor.app->end_without_list();
}

}  // namespace vexa
