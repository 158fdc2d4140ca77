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
  Bytes content;
  const ReadResult read = ReadWholeFile(PathFromUtf8(file), content);
  if (read != ReadResult::kDone) {
    TellWhy(state.context.messages, Icon::kStop, Reason(Attempt::kRead, file, read.error),
            "Unable to open the given file.");
    throw CommandFailed{};
  }
  const std::string_view text(reinterpret_cast<const char*>(content.data()), content.size());
  Document document;
  const CodePage& names = *FindCodePage(page);
  const auto misfit = json ? ReadJsonDocument(text, names, document) : ReadCsvDocument(text, names, document);
  if (!misfit) return document;
  TellWhy(state.context.messages, Icon::kStop, file, "%s: %s", misfit->where.c_str(), misfit->what.c_str());
  throw CommandFailed{};
}

void TellEach(const CommandState& state, const std::vector<ListNote>& notes) {
  for (const ListNote& note : notes) Tell(state.context.messages, note.icon, "%s", note.text.c_str());
}

void SaveDocument(CommandState& state, const Document& document, const std::string& file,
                  const std::string& output) {
  ExpectWhole(state, document, file, output);
  ExpectSaved(state, output, SaveBin(state.context, document, PathFromUtf8(output)));
}

}  // namespace vexa
