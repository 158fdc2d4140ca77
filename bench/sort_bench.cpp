// Sorting 65,535 services of one carrier by three keys beside `sort -s` on the same keys, and what an undo
// step of that sort costs. Each time is the best of several runs.

#include <filesystem>
#include <fstream>
#include <random>

#include "bench/measure.h"
#include "core/edit.h"
#include "core/sort.h"
#include "core/undo.h"

namespace vexa {
namespace {

constexpr int kRuns = 7;

Document MakeServices() {
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  database.lnb_count = 1;
  AddTestSatellite(database, "Satellite1");
  Carrier* carrier = AddTestCarrier(database, 0);
  std::mt19937 random(1);
  for (uint32_t i = 0; i < kMaximumServices; ++i) {
    ServiceRecord& record = AddTestService(database, carrier)->record;
    SetName(record.name,
            Format("%s Channel %u", random() % 2 ? "TV" : "tv", static_cast<unsigned>(random() % 9000)));
    record.free = random() % 2 & 1;
    record.type = (1 + random() % 2) & 3;
    record.program_number = i & 0xFFFF;
  }
  return document;
}

// Status, type and name as the columns of a text: free and TV come first.
void WriteText(const StaticDatabase& database, const std::filesystem::path& path) {
  std::ofstream file(path, std::ios::binary);
  for (const Service* service : database.services)
    file << (service->record.free ? 0 : 1) << '\t' << service->record.type << '\t'
         << NameOf(service->record.name) << '\n';
}

void Run() {
  Document document = MakeServices();
  StaticDatabase& database = *document.sdbs[0].database;
  const auto unsorted = database.carriers[0]->services;
  const auto shuffle = [&] {
    database.carriers[0]->services = unsorted;
    RefillAll(database);
  };
  const SortOptions options{{}, {}, {{ServiceKey::kStatus, ServiceKey::kType, ServiceKey::kName}, false}};
  const double ours = BestMilliseconds(
      kRuns, [&] { SortDatabase(database, options); }, shuffle);

  shuffle();
  const auto text = std::filesystem::temp_directory_path() / "vexa_sort_bench.txt";
  WriteText(database, text);
  UndoHistory history;
  StartHistory(history, document);
  SortDatabase(database, options);
  const double record = BestMilliseconds(
      kRuns,
      [&] {
        database.lnbs[0].power ^= 1;
        RecordChange(history, document);
      },
      [&] { StartHistory(history, document); });
  const size_t small = history.steps.back().parts[0].tables[0].packed.size();
  shuffle();
  StartHistory(history, document);
  SortDatabase(database, options);
  RecordChange(history, document, true);
  size_t large = 0;
  for (const TableChange& table : history.steps.back().parts[0].tables) large += table.packed.size();
  // From here on the database is another object.
  const double undo = BestMilliseconds(
      kRuns, [&] { Undo(history, document); },
      [&] {
        while (Redo(history, document)) {
        }
      });

  const std::string command = "LC_ALL=C sort -s -t '\t' -k1,1n -k2,2n -k3,3f \"" + text.string() +
                              "\" -o \"" + text.string() + ".out\"";
  const double rival = BestMilliseconds(kRuns, [&] { RunCommand(command); });
  std::filesystem::remove(text);
  std::filesystem::remove(text.string() + ".out");
  PrintRow({"65,535 services by three keys", {ours}, "`sort -s`", {rival}});
  PrintRow({"undo step of one bit", {record}});
  PrintRow({"its size", {static_cast<double>(small), "bytes"}});
  PrintRow({"undo of that sort", {undo}});
  PrintRow({"size of its step", {static_cast<double>(large), "bytes"}});
}

}  // namespace
}  // namespace vexa

int main() {
  vexa::Run();
}
