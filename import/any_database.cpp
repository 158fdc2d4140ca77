#include "import/any_database.h"

#include "core/bin_file.h"
#include "import/csv_document.h"
#include "import/json_document.h"
#include "import/list_text.h"
#include "platform/file_reader.h"

namespace vexa {

namespace {

constexpr size_t kDocumentStart = 64 << 10;  // bytes

bool Refuse(const Messages& messages, const Path& path, const Misfit& misfit) {
  TellWhy(messages, Icon::kStop, Utf8FromPath(path) + ": Correct it there, or export the database again.",
          "%s: %s", misfit.where.c_str(), misfit.what.c_str());
  return false;
}

// The beginning of what is too large to be read at once for nothing. A pipe cannot be read twice.
bool JudgeStart(const Messages& messages, const Path& path, bool json) {
  auto reader = OpenFileReader(path);
  std::string start(kDocumentStart, '\0');
  if (!reader || !reader->Read(0, {reinterpret_cast<uint8_t*>(start.data()), start.size()})) return true;
  const auto misfit = json ? JudgeJsonStart(start) : JudgeCsvStart(start);
  return !misfit || Refuse(messages, path, *misfit);
}

}  // namespace

std::string DocumentFormat(const Path& path) {
  return HasExtension(path, ".json") ? "json" : HasExtension(path, ".csv") ? "csv" : "";
}

bool ReadDocumentFile(const Messages& messages, const Path& path, bool json, const CodePage& page,
                      Document& document) {
  if (!JudgeStart(messages, path, json)) return false;
  Bytes content;
  const ReadResult read = ReadWholeFile(path, content, json ? kReadLimit : kLargestCsv);
  if (read != ReadResult::kDone) {
    TellWhy(messages, Icon::kStop, Reason(Attempt::kRead, Utf8FromPath(path), read.error),
            "Unable to open the given file.");
    return false;
  }
  const std::string_view text(reinterpret_cast<const char*>(content.data()), content.size());
  const auto misfit = json ? ReadJsonDocument(text, page, document) : ReadCsvDocument(text, page, document);
  return !misfit || Refuse(messages, path, *misfit);
}

bool OpenAnyDatabase(const Context& context, const Path& path, const DefaultRecords& defaults,
                     const ImportSteps& steps, const CodePage& page, AnyDatabase& database) {
  Document& document = database.document;
  document.source = Utf8FromPath(path);
  document.names = &page;
  const std::string format = DocumentFormat(path);
  if (!format.empty()) return ReadDocumentFile(context.messages, path, format == "json", page, document);
  if (!IsListFile(path)) return OpenBin(context, path, document);
  database.favourites = false;
  ImportSteps steps_to_page = steps;
  const auto list = steps.format ? steps.format : RecognizeList(path, steps.options);
  if (list && IsText(*list) && !steps.options.pages.database) steps_to_page.options.pages.database = &page;
  WorkRecords work;
  return ImportListFile(context, path, defaults, steps_to_page, work) &&
         OpenWorkRecords(About(context, Utf8FromPath(path)), work, defaults, document);
}

}  // namespace vexa
