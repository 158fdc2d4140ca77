// Databases as JSON documents and CSV tables, read; any database written back whole.
#include "cli/commands.h"
#include "core/bin_file.h"
#include "import/csv_document.h"
#include "import/json_document.h"
#include "import/list_text.h"
#include "platform/code_page.h"
#include "platform/file_reader.h"

namespace vexa {

std::string DocumentFormat(const std::string& file) {
  const Path path = PathFromUtf8(file);
  return HasExtension(path, ".json") ? "json" : HasExtension(path, ".csv") ? "csv" : "";
}

namespace {

constexpr size_t kDocumentStart = 64 << 10;  // bytes

[[noreturn]] void Refuse(const CommandState& state, const std::string& file, const Misfit& misfit) {
  TellWhy(state.context.messages, Icon::kStop, file + ": Correct it there, or export the database again.",
          "%s: %s", misfit.where.c_str(), misfit.what.c_str());
  throw CommandFailed{};
}

// The beginning of what is too large to be read at once for nothing. A pipe cannot be read twice.
void JudgeStart(const CommandState& state, const std::string& file, bool json) {
  auto reader = OpenFileReader(PathFromUtf8(file));
  std::string start(kDocumentStart, '\0');
  if (!reader || !reader->Read(0, {reinterpret_cast<uint8_t*>(start.data()), start.size()})) return;
  if (const auto misfit = json ? JudgeJsonStart(start) : JudgeCsvStart(start)) Refuse(state, file, *misfit);
}

}  // namespace

Document ReadDocumentFile(CommandState& state, const std::string& file, bool json, const std::string& page) {
  JudgeStart(state, file, json);
  Bytes content;
  const ReadResult read = ReadWholeFile(PathFromUtf8(file), content, json ? kReadLimit : kLargestCsv);
  if (read != ReadResult::kDone) {
    TellWhy(state.context.messages, Icon::kStop, Reason(Attempt::kRead, file, read.error),
            "Unable to open the given file.");
    throw CommandFailed{};
  }
  const std::string_view text(reinterpret_cast<const char*>(content.data()), content.size());
  Document document;
  const CodePage& names = *FindCodePage(page);
  const auto misfit = json ? ReadJsonDocument(text, names, document) : ReadCsvDocument(text, names, document);
  if (misfit) Refuse(state, file, *misfit);
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
