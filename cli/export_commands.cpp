// export: one SDB as the text report, with every field as CSV or JSON, or as tables or a page for people; all
// of them as one JSON document.
#include <memory>

#include "cli/commands.h"
#include "cli/usage.h"
#include "core/nearest_word.h"
#include "import/csv_document.h"
#include "import/csv_table.h"
#include "import/json_document.h"
#include "import/text_export.h"
#include "platform/code_page.h"
#include "platform/text.h"
#include "view/report_page.h"

namespace vexa {

namespace {

constexpr const char* kTableFormat = "csv-table";

struct ExportOptions {
  std::string file, output, format = "text", sdb = "1", page = "Windows-1252", what, from;
  bool mark = false;
};

void RefuseEmpty(CommandState& state, const std::string& file) {
  TellWhy(state.context.messages, Icon::kStop, file, "There is no information to export");
  throw CommandFailed{};
}

// The file to write. JSON, CSV, tables and pages are UTF-8, made by the code page of the database's names;
// the text report repeats the bytes of the names as they stand in the database, whatever their code page.
std::string TextOf(const Document& document, size_t place, const ExportOptions& options) {
  const OpenSdb& sdb = document.sdbs[place];
  const CodePage& page = *FindCodePage(options.page);
  if (options.format == "html") return ReportPage(document, place, page, PlaceFromText(options.from));
  if (options.format == "json") return JsonOfSdb(sdb, page);
  const std::string mark = options.mark ? "\xEF\xBB\xBF" : "";
  if (options.format == "csv") return mark + CsvOfSdb(sdb, page);
  if (options.format == kTableFormat)
    return mark + TableOfSdb(*sdb.database, TableNamed(options.what).value(), page);
  return DatabaseReport(*sdb.database);
}

void Export(CommandState& state, const ExportOptions& options) {
  if (options.sdb == "all" && options.format != "json")
    throw CLI::ValidationError("--sdb", "all goes with --format json");
  const bool table = options.format == kTableFormat;
  if (options.mark && options.format != "csv" && !table)
    throw CLI::ValidationError("--bom", "goes with --format csv and csv-table");
  if (table == options.what.empty())
    throw CLI::ValidationError("--what", "goes with --format csv-table, and is needed there");
  if (!options.from.empty() && options.format != "html")
    throw CLI::ValidationError("--place", "goes with --format html");
  ExpectApart({{"FILE", PathFromUtf8(options.file)}}, {{"--output", PathFromUtf8(options.output)}});
  const Document document = OpenDocument(state, options.file);
  std::string text;
  if (options.sdb == "all") {
    text = JsonOfDocument(document, *FindCodePage(options.page));
  } else {
    const auto chosen = ParseList(state, options.sdb, document.sdbs.size(), "SDB");
    if (document.sdbs[chosen.front()].database->satellites.empty()) RefuseEmpty(state, options.file);
    text = TextOf(document, chosen.front(), options);
  }
  WriteOutput(state, options.output, {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

}  // namespace

std::string CheckCodePage(const std::string& name) {
  if (FindCodePage(name)) return "";
  std::string names;
  for (const std::string& known : CodePageNames()) names += (names.empty() ? "" : ", ") + known;
  return "\"" + name + "\" is no code page: " + names + NearestText(name, CodePageNames());
}

void AddExportCommand(CLI::App& program, CommandState& state) {
  const auto options = std::make_shared<ExportOptions>();
  CLI::App& command =
      *program.add_subcommand("export", "Write one SDB as a text report, a page, CSV or JSON");
  command.add_option("FILE", options->file, "Database file")->required();
  command.add_option("-o,--output", options->output, "File to write")->required();
  command.add_option("--sdb", options->sdb, "Which SDB, from 1; all for one JSON document of everything")
      ->check([](const std::string& text) { return text == "all" ? std::string() : CheckPlace(text); });
  command.add_option("--format", options->format, "text, csv, json, csv-table or html")
      ->check(OneOf({"text", "csv", "json", kTableFormat, "html"}));
  command
      .add_option("--what", options->what,
                  "Of which records the csv-table is: lnbs, satellites, carriers, services or favourites")
      ->check(OneOf(TableNames()));
  command.add_option("--code-page", options->page, "In which page the names of the database are read")
      ->check(CheckCodePage);
  command
      .add_option("--place", options->from,
                  "Latitude,longitude in degrees (51.5,-0.13), from where a page says where the dish looks")
      ->check([](const std::string& text) {
        return PlaceFromText(text) ? "" : "\"" + text + "\" is no latitude and longitude, such as 51.5,-0.13";
      });
  command.add_flag("--bom", options->mark, "Begin a CSV table of either kind with a byte-order mark");
  command.callback([&state, options] { Export(state, *options); });
}

}  // namespace vexa
