#include "serial/run_log.h"

#include "import/csv.h"

namespace vexa {

namespace {

std::string CellsOf(const RunLogRow& row) {
  const LocalTime& t = row.time;
  const RunResult& result = row.result;
  const char* const verified = !result.verified ? "" : *result.verified ? "yes" : "no";
  const std::vector<std::string> cells = {
      Format("%04d-%02d-%02d %02d:%02d:%02d", t.year, t.month, t.day, t.hour, t.minute, t.second),
      row.serial,
      row.database,
      row.sha256,
      row.configuration,
      std::to_string(result.packets),
      std::to_string(result.repeated),
      Format("%.1f", result.seconds),
      verified,
      RunEndName(row.end)};
  std::string text;
  AppendCsvRow(text, cells);
  return text;
}

}  // namespace

const char* RunEndName(RunEnd end) {
  constexpr const char* kNames[] = {"ok", "failed", "cancelled"};
  return kNames[static_cast<size_t>(end)];
}

Outcome AppendToRunLog(const Path& file, const RunLogRow& row) {
  const auto bytes = [](const std::string& text) {
    return std::span(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  };
  std::string header;
  AppendCsvRow(header, {"time", "serial", "database", "sha256", "configuration", "packets", "repeated",
                        "seconds", "verified", "result"});
  const std::string cells = CellsOf(row);
  return AppendLines(file, bytes(cells), bytes(header));
}

// One that is not there is not made for the trial: taking it away again could take another program's row
// along.
Outcome TryRunLog(const Path& file) {
  std::error_code error;
  if (std::filesystem::exists(file, error)) return AppendLines(file, {});
  if (const std::error_code refusal = WhyNotWritable(file)) return refusal;
  return {};
}

}  // namespace vexa
