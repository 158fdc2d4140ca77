// Commands of files, views and windows.
#include "core/bin_file.h"
#include "core/messages.h"
#include "import/text_export.h"
#include "ui/controls/file_dialogs.h"
#include "ui/controls/help.h"
#include "ui/editor/change.h"
#include "ui/editor/editor.h"
#include "ui/forms/form_commands.h"
#include "ui/frame/commands.h"
#include "ui/frame/frame.h"
#include "view/report_page.h"
#include "view/target_file.h"

namespace vexa {

namespace {

void NewDatabase(Application& app) {
  OpenEditor(app, NewDocument(app.defaults), {}, false);
}

void OpenDatabase(Application& app) {
  if (const auto path = AskOpenFile(app.frame, {"Open", kBinFilters, "bin"})) OpenDatabaseFile(app, *path);
}

void Save(Application& app) {
  SaveEditor(*ActiveEditor(app));
}
void SaveAs(Application& app) {
  SaveEditorAs(*ActiveEditor(app));
}
void CloseDatabase(Application& app) {
  SendMessageW(ActiveEditor(app)->window, WM_CLOSE, 0, 0);
}
void Exit(Application& app) {
  PostMessageW(app.frame, WM_CLOSE, 0, 0);
}

void Contents(Application& app) {
  ShowHelp(app, HelpPage(HelpWindow::kContents));
}

void SdbInformation(Application& app) {
  const std::string text = BinInformation(app.context, ActiveEditor(app)->document);
  app.context.messages.tell({Icon::kInformation, text, "Bin file information", ""});
}

void Information(Application& app) {
  ShowInformation(*ActiveEditor(app));
}

void ShowReport(Application& app, const Path& path) {
  std::wstring line = app.report_viewer + L" " + path.native();
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(SystemFile(app.report_viewer).c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                      nullptr, &start, &process)) {
    TellWhy(app.context.messages, Icon::kStop,
            Reason(Attempt::kRead, Utf8(app.report_viewer), LastSystemError()), "Error in loading notepad");
    return;
  }
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
}

// An export is called as the database's file, or as the list that the database was imported from.
Path ProposedReport(const EditorWindow& editor, const char* extension) {
  const Path& own = editor.path.empty() ? editor.imported_from : editor.path;
  return own.empty() ? Path() : NamedAfter(own, extension);
}

void TellNothingToExport(const EditorWindow& editor, const OpenSdb* sdb) {
  TellWhy(editor.app->context.messages, Icon::kStop,
          sdb ? NameText(editor.document, sdb->name) + " has no satellite." : "",
          "There is no information to export");
}

void TextFile(Application& app) {
  const EditorWindow& editor = *ActiveEditor(app);
  const OpenSdb* sdb = SelectedSdb(editor);
  if (!sdb || sdb->database->satellites.empty()) return TellNothingToExport(editor, sdb);
  const auto path = AskSaveFile(app.frame, {"Save", {{"Text Files ( *.TXT )", "*.txt"}}, "txt"},
                                ProposedReport(editor, ".txt"));
  if (!path) return;
  const WriteResult written = ExportDatabaseText(*sdb->database, *path);
  if (written != WriteResult::kDone) {
    TellWhy(app.context.messages, Icon::kStop, WriteReason(*path, written.error), "Export process failed");
    return;
  }
  ShowReport(app, *path);
}

void HtmlPage(Application& app) {
  const EditorWindow& editor = *ActiveEditor(app);
  const OpenSdb* sdb = SelectedSdb(editor);
  if (!sdb || sdb->database->satellites.empty()) return TellNothingToExport(editor, sdb);
  const auto path = AskSaveFile(app.frame, {"Save", {{"HTML Pages ( *.HTML )", "*.html"}}, "html"},
                                ProposedReport(editor, ".html"));
  if (!path) return;
  const auto place = static_cast<size_t>(sdb - editor.document.sdbs.data());
  const std::string page = ReportPage(editor.document, place, NamesPage(editor.document), app.place);
  const WriteResult written =
      WriteWholeFile(*path, {reinterpret_cast<const uint8_t*>(page.data()), page.size()});
  if (written != WriteResult::kDone) {
    TellWhy(app.context.messages, Icon::kStop, WriteReason(*path, written.error), "Export process failed");
    return;
  }
  if (!ShowInBrowser(app, *path))
    TellWhy(app.context.messages, Icon::kInformation, "It stands in " + Utf8FromPath(*path) + ".",
            "No program shows HTML pages here.");
}

void UpdateFromTable(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  const OpenSdb* selected = SelectedSdb(editor);
  const auto path = AskOpenFile(app.frame, {"Update from Table", {{"CSV Tables ( *.CSV )", "*.csv"}}, "csv"});
  if (!path || !selected) return;
  ChangeByTable(editor, [&] {
    return UpdateFromTableFile(app.context.messages, *path, NamesPage(editor.document), *selected->database,
                               [&](const std::string& text) {
                                 const Answer answer = AskYesNoCancel(app, text);
                                 if (answer == Answer::kCancel) return MissingRows::kCancel;
                                 return answer == Answer::kYes ? MissingRows::kDelete : MissingRows::kKeep;
                               });
  });
}

void CompressBin(Application& app) {
  EditorWindow& editor = *ActiveEditor(app);
  ChangeDocument(editor, [&] {
    editor.document.compress_payload = !editor.document.compress_payload;
    return true;
  });
}

void Undo(Application& app) {
  UndoChange(*ActiveEditor(app));
}
void Redo(Application& app) {
  RedoChange(*ActiveEditor(app));
}
void Revert(Application& app) {
  RevertChanges(*ActiveEditor(app));
}

template <size_t N>
void Recent(Application& app) {
  if (N < app.recent.paths.size()) OpenDatabaseFile(app, PathFromUtf8(app.recent.paths[N]));
}

void Cascade(Application& app) {
  SendMessageW(app.client, WM_MDICASCADE, 0, 0);
}
void TileHorizontally(Application& app) {
  SendMessageW(app.client, WM_MDITILE, MDITILE_HORIZONTAL, 0);
}
void TileVertically(Application& app) {
  SendMessageW(app.client, WM_MDITILE, MDITILE_VERTICAL, 0);
}

template <ListView view>
void View(Application& app) {
  ShowView(*ActiveEditor(app), view);
}

constexpr CommandRow kFrameRows[] = {
    {kCmdNew, NewDatabase},
    {kCmdOpen, OpenDatabase},
    {kCmdSave, Save},
    {kCmdSaveAs, SaveAs},
    {kCmdClose, CloseDatabase},
    {kCmdExit, Exit},
    {kCmdContents, Contents},
    {kCmdAbout, ShowAbout},
    {kCmdSdbInformation, SdbInformation},
    {kCmdInformation, Information},
    {kCmdTextFile, TextFile},
    {kCmdExportSdb, TextFile},
    {kCmdHtmlPage, HtmlPage},
    {kCmdPicture, SwitchPicture},
    {kCmdCompressBin, CompressBin},
    {kCmdUndo, Undo},
    {kCmdRedo, Redo},
    {kCmdRevert, Revert},
    {kCmdUpdateFromTable, UpdateFromTable},
    {kCmdRecent1, Recent<0>},
    {kCmdRecent2, Recent<1>},
    {kCmdRecent3, Recent<2>},
    {kCmdRecent4, Recent<3>},
    {kCmdCascade, Cascade},
    {kCmdTileHorizontally, TileHorizontally},
    {kCmdTileVertically, TileVertically},
    {kCmdViewTv, View<ListView::kTvServices>},
    {kCmdViewRadio, View<ListView::kRadioServices>},
    {kCmdViewBoth, View<ListView::kServices>},
    {kCmdViewServices, View<ListView::kServices>},
    {kCmdViewCarriers, View<ListView::kCarriers>},
};

}  // namespace

std::span<const CommandRow> FrameCommands() {
  return kFrameRows;
}

}  // namespace vexa
