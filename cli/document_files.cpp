// Databases as JSON documents and CSV tables, read; any database written back whole.
#include "cli/commands.h"
#include "core/bin_file.h"
#include "import/csv_document.h"
#include "import/json_document.h"
#include "import/list_text.h"
#include "platform/code_page.h"

namespace vexa {

std::string DocumentFormat(const std::string& file) {
  const Path path = PathFromUtf8(file);
  return HasExtension(path, ".json") ? "json" : HasExtension(path, ".csv") ? "csv" : "";
}

Document ReadDocumentFile(CommandState& state, const std::string& file, bool json, const std::string& page) {
  const auto content = ReadWholeFile(PathFromUtf8(file));
  if (!content) {
    const size_t told = state.told.size();
    Tell(state.context.messages, Icon::kStop, "Unable to open the given file.");
    TellFile(state, told, file, WhyUnreadable(PathFromUtf8(file)));
    throw CommandFailed{};
  }
  const std::string_view text(reinterpret_cast<const char*>(content->data()), content->size());
  Document document;
  const CodePage& names = *FindCodePage(page);
  const auto misfit = json ? ReadJsonDocument(text, names, document) : ReadCsvDocument(text, names, document);
  if (!misfit) return document;
  const size_t told = state.told.size();
  Tell(state.context.messages, Icon::kStop, "%s: %s", misfit->where.c_str(), misfit->what.c_str());
  TellFile(state, told, file, "");
  throw CommandFailed{};
}

void TellEach(const CommandState& state, const std::vector<ListNote>& notes) {
  for (const ListNote& note : notes) Tell(state.context.messages, note.icon, "%s", note.text.c_str());
}

void SaveDocument(CommandState& state, const Document& document, const std::string& file,
                  const std::string& output) {
  ExpectWhole(state, document, file, output);
  const size_t told = state.told.size();
  ExpectSaved(state, output, told, SaveBin(state.context, document, PathFromUtf8(output)));
}

}  // namespace vexa
