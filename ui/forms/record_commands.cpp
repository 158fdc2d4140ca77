// Commands on the records that tree and list show: adding, changing, deleting, moving, marking, selecting,
// and saving parts of the database.
#include <algorithm>

#include "core/messages.h"
#include "platform/text.h"
#include "ui/controls/file_dialogs.h"
#include "ui/editor/change.h"
#include "ui/editor/editor_parts.h"
#include "ui/forms/form_commands.h"
#include "ui/forms/record_dialogs.h"
#include "view/common_form.h"
#include "view/menu_table.h"
#include "view/node_edit.h"

namespace vexa {

namespace {

const Messages& MessagesOf(const EditorWindow& editor) {
  return editor.app->context.messages;
}

void Edit(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  EditRecords(editor, CommandRows(editor));
}

// A new record is selected: in the list where that shows it, else beside its sister in the tree or where it
// belongs.
void ShowAdded(EditorWindow& editor, const std::optional<NodeRef>& added) {
  if (!added || SelectListRow(editor, *added)) return;
  const TreePath place = PathOf(editor.document, *added);
  if (editor.selected.kind == added->kind)
    SelectTreeNode(editor, place);
  else
    ShowRecord(editor, place, false);
}

NodeRef PlaceToAdd(const EditorWindow& editor) {
  return NodeToAddAt(editor.selected, LookOf(editor).row);
}

void Add(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  const NodeRef at = PlaceToAdd(editor);
  const bool below_tree_node = at == editor.selected;
  if (at.kind == NodeKind::kTvGroup || at.kind == NodeKind::kRadioGroup) {
    EditFavourites(editor, at, at.kind == NodeKind::kRadioGroup);
    return;
  }
  std::optional<NodeRef> added;
  ChangeDocument(editor, [&] {
    added = AddAtNode(MessagesOf(editor), editor.document, at, app.defaults, TypeShown(editor.view))
                .value_or(NodeRef{});
    return added->kind != NodeKind::kNone;
  });
  if (added->kind == NodeKind::kNone) return;
  // What is added below the selected node shall be seen.
  if (below_tree_node && at.kind != added->kind) OpenSelectedNode(editor);
  ShowAdded(editor, added);
}

void Insert(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  const std::vector<NodeRef> rows = CommandRows(editor);
  std::optional<NodeRef> added;
  ChangeDocument(editor, [&] {
    added = InsertAtRows(MessagesOf(editor), editor.document, rows, app.defaults, TypeShown(editor.view));
    return added.has_value();
  });
  ShowAdded(editor, added);
}

void Delete(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  const std::vector<NodeRef> rows = CommandRows(editor);
  const std::vector<size_t> places = SelectedRows(editor);
  const bool in_list = GetFocus() == editor.list && !places.empty();
  const bool done =
      ChangeDocument(editor, [&] { return DeleteNodes(MessagesOf(editor), editor.document, rows); });
  // The keyboard goes on where it was.
  if (done && in_list && !editor.rows.rows.empty())
    SelectListRow(editor, editor.rows.rows[std::min(places[0], editor.rows.rows.size() - 1)]);
}

void MoveOrSwap(EditorWindow& editor, bool swap) {
  const Messages& messages = MessagesOf(editor);
  const std::vector<NodeRef> rows = CommandRows(editor);
  if (!CheckMoveNodes(messages, rows, swap)) return;
  if (rows[0].kind != NodeKind::kService) {
    MoveRecords(editor, rows, swap);
  } else if (!swap) {
    MoveServicesOf(editor, rows);
  } else {
    ChangeDocument(editor, [&] {
      return SwapServices(messages, *editor.document.sdbs[rows[0].sdb].database, ServicesOf(rows));
    });
  }
}

void Move(Application& app) {
  MoveOrSwap(*ActiveEditor(app), false);
}
void Swap(Application& app) {
  MoveOrSwap(*ActiveEditor(app), true);
}

void SelectAll(Application& app) {
  SelectListRows(*ActiveEditor(app), [](size_t) { return true; });
}

void InvertRows(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  std::vector<bool> selected(editor.rows.size());
  for (const size_t row : SelectedRows(editor)) selected[row] = true;
  SelectListRows(editor, [&](size_t row) { return !selected[row]; });
}

void SelectDuplicates(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  std::vector<bool> repeats(editor.rows.size());
  const Rows duplicates = DuplicateRows(editor.rows.rows);
  for (const size_t row : duplicates) repeats[row] = true;
  SelectListRows(editor, [&](size_t row) { return repeats[row]; });
  const std::string text = DuplicatesText(duplicates.size());
  if (duplicates.empty()) {
    Tell(MessagesOf(editor), Icon::kInformation, "%s", text.c_str());
  } else {
    app.outcome = text;
  }
}

void CompressPart(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  const bool boxes = IsAmongUbis(editor.selected);
  const OpenSdb* sdb = SelectedSdb(editor);
  if (!boxes && !sdb) return;
  bool& flag = boxes ? editor.document.compress_ubis : sdb->database->compressed;
  ChangeDocument(editor, [&] {
    flag = !flag;
    return true;
  });
}

void SavePart(EditorWindow& editor, const char* title,
              const std::function<std::optional<uint64_t>(const Context&, const Path&)>& save) {
  const auto path =
      AskSaveFile(editor.app->frame, {title, {{"Static Database BIN Files ( *.BIN )", "*.bin"}}, "bin"});
  if (!path) return;
  const WaitPointer wait;
  const Context& context = editor.app->context;
  if (const auto size = save(context, *path)) CheckBinSize(context, *path, *size);
}

void SaveSdb(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  const OpenSdb* sdb = SelectedSdb(editor);
  if (!sdb || !CheckSeparateSdb(MessagesOf(editor), *sdb->database)) return;
  const auto place = static_cast<uint32_t>(sdb - editor.document.sdbs.data());
  SavePart(editor, "Save selected SDB as", [&](const Context& context, const Path& path) {
    return SaveBin(context, editor.document, path, editor.version, {uint32_t{1} << place, 0});
  });
}

void SaveChosenSatellites(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  const std::vector<NodeRef> rows = CommandRows(editor);
  const Rows satellites = SatelliteRows(editor.document, rows, SelectedRecords(editor),
                                        editor.filter.terms.empty() ? nullptr : &editor.rows.rows);
  if (satellites.empty())
    return Tell(MessagesOf(editor), Icon::kInformation, "No satellite is selected, and the list shows none.");
  SavePart(editor, "Save selected Satellite(s) as", [&](const Context& context, const Path& path) {
    return SaveSatellites(context, editor.document, rows[0].sdb, satellites, path, editor.version);
  });
}

void SaveParts(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  const auto parts = AskParts(editor);
  if (!parts) return;
  SavePart(editor, "Save", [&](const Context& context, const Path& path) {
    return SaveBin(context, editor.document, path, editor.version, *parts);
  });
}

void GoToService(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  ShowRecord(editor, PathOf(PlaceOf(editor.document, CommandNode(editor))), true);
}

void Version(Application& app) {
  AskVersion(*ActiveEditor(app));
}

constexpr CommandRow kRecordCommands[] = {
    {kCmdEdit, Edit},
    {kCmdAdd, Add},
    {kCmdInsert, Insert},
    {kCmdDelete, Delete},
    {kCmdMove, Move},
    {kCmdSwap, Swap},
    {kCmdSelectAll, SelectAll},
    {kCmdInvertSelection, InvertRows},
    {kCmdSelectDuplicates, SelectDuplicates},
    {kCmdCompressSdb, CompressPart},
    {kCmdSaveSdb, SaveSdb},
    {kCmdSaveSatellites, SaveChosenSatellites},
    {kCmdSaveParts, SaveParts},
    {kCmdGoToService, GoToService},
    {kCmdVersion, Version},
};

}  // namespace

std::span<const CommandRow> RecordCommands() {
  return kRecordCommands;
}

bool CanRunRow(Application& app, UINT id) {
  EditorWindow* editor = ActiveEditor(app);
  if (!editor || app.busy != 0) return false;
  if (id < kFirstSelectCommand) return ListView_GetSelectedCount(editor->list) != 0;
  if (id < kFirstGroupCommand) return !editor->rows.rows.empty();
  return CommandNode(*editor).service != nullptr;
}

bool RunRowCommand(Application& app, UINT id) {
  if (id < kFirstMarkCommand || id >= kEndOfRowCommands) return false;
  if (!CanRunRow(app, id)) return true;
  EditorWindow& editor = *ActiveEditor(app);
  const auto& choices = FieldChoices();
  if (id >= kFirstGroupCommand) {
    AddToGroup(editor, CommandRows(editor), id - kFirstGroupCommand);
  } else if (id >= kFirstSelectCommand && id - kFirstSelectCommand < choices.size()) {
    std::vector<bool> matching(editor.rows.size());
    for (const size_t row : MatchingRows(editor.rows.rows, choices[id - kFirstSelectCommand]))
      matching[row] = true;
    SelectListRows(editor, [&](size_t row) { return matching[row]; });
  } else if (id < kFirstSelectCommand && id - kFirstMarkCommand < choices.size()) {
    size_t left_lists = 0;
    ChangeDocument(editor, [&] {
      left_lists = MarkNodes(editor.document, SelectedRecords(editor), choices[id - kFirstMarkCommand]);
      return true;
    });
    TellLeftLists(MessagesOf(editor), left_lists);
  }
  return true;
}

}  // namespace vexa
