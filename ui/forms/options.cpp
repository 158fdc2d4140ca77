// Commands of options and tools.
#include "ui/forms/options.h"

#include "core/merge.h"
#include "ui/controls/file_dialogs.h"
#include "ui/editor/change.h"
#include "ui/editor/editor_parts.h"
#include "ui/forms/form_commands.h"

namespace vexa {

namespace {

void Settings(Application& app) {
  SettingsRequest request;
  request.needs = {true, true, true};
  request.image_command = request.urt_conversion = true;
  request.from_console = app.console && !ActiveEditor(app);
  request.port_connected = app.port_connected && app.port_connected();
  ShowSettings(app, request);
}

void Sort(Application& app) {
  ShowSort(*ActiveEditor(app));
}
void Find(Application& app) {
  ShowFind(*ActiveEditor(app));
}
void FindNextRecord(Application& app) {
  FindAgain(*ActiveEditor(app), false);
}
void FindPreviousRecord(Application& app) {
  FindAgain(*ActiveEditor(app), true);
}
void Filter(Application& app) {
  GoToFilter(*ActiveEditor(app));
}
void Compare(Application& app) {
  ShowComparison(*ActiveEditor(app));
}
void OrderFrom(Application& app) {
  ApplyOrderFrom(*ActiveEditor(app));
}
void UseShownOrder(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  const std::vector<NodeRef> rows = editor.rows.rows;
  const bool changed = ChangeDocument(
      editor, [&] { return UseOrder(editor.document, rows); }, true);
  // The records stand so now: no column orders them.
  if (changed) ReorderList(editor, {});
}
void Check(Application& app) {
  ShowFindings(*ActiveEditor(app));
}

void MergeSdbs(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  const auto files = AskOpenFiles(app.frame, {"Open", kBinFilters, "bin"});
  if (files.empty()) return;
  ChangeDocument(editor, [&] { return MergeBins(app.context, files, editor.document); });
}

constexpr CommandRow kOptionCommands[] = {
    {kCmdDefaultValues, ShowDefaultValues},
    {kCmdSettings, Settings},
    {kCmdColour, ShowColours},
    {kCmdSort, Sort},
    {kCmdFind, Find},
    {kCmdFindNext, FindNextRecord},
    {kCmdFindPrevious, FindPreviousRecord},
    {kCmdFilter, Filter},
    {kCmdCompare, Compare},
    {kCmdOrderLike, OrderFrom},
    {kCmdUseOrder, UseShownOrder},
    {kCmdCheck, Check},
    {kCmdMergeSdb, MergeSdbs},
};

}  // namespace

std::span<const CommandRow> OptionCommands() {
  return kOptionCommands;
}

}  // namespace vexa
