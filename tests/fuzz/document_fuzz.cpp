// Databases as documents: the first byte chooses JSON or CSV, the rest is the text. What is accepted keeps
// all links and comes back the same from what is written of it.
#include <cstdlib>
#include <string_view>

#include "import/csv_document.h"
#include "import/json_document.h"

namespace {

std::string Written(const vexa::Document& document, bool json) {
  return json ? vexa::JsonOfDocument(document, vexa::Windows1252())
              : vexa::CsvOfSdb(document.sdbs[0], vexa::Windows1252());
}

std::optional<vexa::Misfit> Read(std::string_view text, bool json, vexa::Document& document) {
  return json ? vexa::ReadJsonDocument(text, vexa::Windows1252(), document)
              : vexa::ReadCsvDocument(text, vexa::Windows1252(), document);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const bool json = (data[0] & 1) != 0;
  vexa::Document document;
  const auto misfit = Read({reinterpret_cast<const char*>(data) + 1, size - 1}, json, document);
  if (misfit) {
    if (misfit->where.empty() || misfit->what.empty()) std::abort();
    return 0;
  }
  for (const vexa::OpenSdb& sdb : document.sdbs) {
    if (!vexa::CheckLinks(*sdb.database).empty()) std::abort();
  }
  const std::string text = Written(document, json);
  vexa::Document again;
  if (Read(text, json, again)) std::abort();
  if (Written(again, json) != text) std::abort();
  return 0;
}
