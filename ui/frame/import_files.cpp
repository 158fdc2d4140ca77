#include "ui/frame/import_files.h"

#include "core/messages.h"
#include "import/import_command.h"
#include "platform/text.h"
#include "ui/controls/command_row.h"
#include "ui/controls/file_dialogs.h"
#include "ui/controls/progress_box.h"
#include "ui/editor/editor.h"
#include "ui/forms/import_dialogs.h"
#include "ui/forms/import_wizard.h"
#include "ui/frame/commands.h"

namespace vexa {

namespace {

// The limit judges the active window, though the list opens in a window of its own.
bool SdbLimitReached(Application& app) {
  const EditorWindow* editor = ActiveEditor(app);
  if (!editor || editor->document.sdbs.size() < kMaximumSdbs) return false;
  TellWhy(
      app.context.messages, Icon::kStop,
      Format("The active window holds %zu SDBs, the most that fit. Choose another window, or delete an SDB.",
             editor->document.sdbs.size()),
      "SDB count exceeds the allowed numbers.Cannot add more SDB's.");
  return true;
}

// A byte-order mark before a SatcoDX list is no reason to refuse it: the import asks how to read it.
ListOptions Lenient() {
  return {.satcodx = {.layout = SatcodxLayout::kAuto}};
}

template <ListFormat format>
void Import(Application& app) {
  if (SdbLimitReached(app)) return;
  FileQuestion question{.title = "Open a File", .filters = {}};
  for (const ListFormatRow& row : ListFormats()) question.filters.push_back({row.import_filter, row.pattern});
  question.first_filter = static_cast<size_t>(format);
  if (const auto path = AskOpenFile(app.frame, question)) ImportListInWindow(app, *path, format);
}

constexpr CommandRow kImportRows[] = {
    {kCmdImportSatcodx, Import<ListFormat::kSatcodx>}, {kCmdImportDvb2000, Import<ListFormat::kDvb2000>},
    {kCmdImportLyngsat, Import<ListFormat::kLyngsat>}, {kCmdImportVdr, Import<ListFormat::kVdr>},
    {kCmdImportLamedb, Import<ListFormat::kLamedb>},   {kCmdImportDvbv5, Import<ListFormat::kDvbv5>},
};

}  // namespace

std::optional<ListFormat> ListFormatOf(const Path& path) {
  return RecognizeList(path, Lenient());
}

bool ImportListInWindow(Application& app, const Path& path, std::optional<ListFormat> named) {
  const CodePage* names = app.names;
  const Context about = About(app.context, Utf8FromPath(path));
  ImportSteps steps;
  steps.filter = FilterMode::kAsk;
  steps.format = named ? RecognizeListAs(path, *named, Lenient()) : ListFormatOf(path);
  steps.ask = [&](const ListToAsk& list, ListOptions& options) {
    return AskHowToRead(app, list, options, names);
  };
  steps.run = [&](const ListReading& read) {
    const ProgressBox progress(app, Utf8FromPath(path));
    return read(progress.context());
  };
  steps.tell = [&](const std::vector<ListNote>& notes) { TellNotes(about.messages, notes); };
  steps.choose = [&](WorkRecords& work) { return RunImportWizard(app, work, *names); };
  WorkRecords work;
  Document document;
  if (!ImportListFile(app.context, path, app.defaults, steps, work) ||
      !OpenWorkRecords(about, work, app.defaults, document))
    return false;
  document.names = names;
  EditorWindow* editor = OpenEditor(app, std::move(document), {}, true, path);
  if (!editor) return false;
  OfferCompletion(*editor, path, steps.format && RowOf(*steps.format).names_side);
  return true;
}

std::span<const CommandRow> ImportCommands() {
  return kImportRows;
}

}  // namespace vexa
