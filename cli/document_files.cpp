// Databases as JSON documents and CSV tables, read; any database written back whole.
#include "cli/commands.h"
#include "core/bin_file.h"
#include "import/any_database.h"
#include "platform/code_page.h"

namespace vexa {

Document ReadDocument(CommandState& state, const std::string& file, bool json, const std::string& page) {
  Document document;
  if (!ReadDocumentFile(state.context.messages, PathFromUtf8(file), json, *FindCodePage(page), document))
    throw CommandFailed{};
  return document;
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
