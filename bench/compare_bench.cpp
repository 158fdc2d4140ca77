// Comparing two databases of 65,535 services beside opening both, and taking over all that differs. Each time
// is the best of several runs.

#include "bench/measure.h"
#include "core/compare.h"
#include "core/edit.h"
#include "core/take_over.h"

namespace vexa {
namespace {

constexpr int kRuns = 5;

// Every tenth service says something else, every hundredth is gone.
void Change(StaticDatabase& database) {
  std::vector<Service*> gone;
  for (size_t i = 0; i < database.services.size(); ++i) {
    if (i % 10 == 3) database.services[i]->record.audio_pid ^= 1;
    if (i % 100 == 7) gone.push_back(database.services[i]);
  }
  DeleteServices(database, gone);
}

void Run() {
  const auto folder = MakeTestFolder("vexa-compare-bench");
  Require(folder.has_value(), "making a folder");
  Context context;
  context.messages.tell = [](const Message& message) { std::fprintf(stderr, "%s\n", message.text.c_str()); };
  context.messages.ask = [](const std::string&, const std::string&, bool) { return false; };
  context.temporary_folder = *folder;
  const Path first_path = *folder / "first.bin", second_path = *folder / "second.bin";
  SaveLargestDatabase(context, first_path);
  Document second;
  Require(OpenBin(context, first_path, second), "opening the database");
  Change(*second.sdbs[0].database);
  Require(SaveBin(context, second, second_path).has_value(), "saving the other database");

  Document first;
  const double opening = BestMilliseconds(kRuns, [&] {
    first = {};
    second = {};
    Require(OpenBin(context, first_path, first) && OpenBin(context, second_path, second), "opening both");
  });
  std::vector<Difference> differences;
  const double comparing =
      BestMilliseconds(kRuns, [&] { differences = CompareDocuments(first, 0, second, 0); });
  const double showing =
      BestMilliseconds(kRuns, [&] { differences = CompareDocuments(first, 0, second, 0, true); });
  size_t differing = 0;
  std::vector<size_t> chosen;
  for (size_t i = 0; i < differences.size(); ++i) {
    if (differences[i].sign != '=') ++differing, chosen.push_back(i);
  }
  const double taking = BestMilliseconds(1, [&] {
    Require(TakeOver(context.messages, first, 0, second, 0, differences, chosen).has_value(), "taking over");
  });
  Require(CompareDocuments(first, 0, second, 0).empty(), "taking over everything");
  RemoveFolder(*folder);
  const std::string both = "opening both";
  PrintRow({"comparing two databases of 65,535 services, " + std::to_string(differing) + " differences",
            {comparing},
            both,
            {opening},
            "2 x"});
  PrintRow({"comparing, with every record", {showing}, both, {opening}});
  PrintRow({"taking over all that differs", {taking}, both, {opening}});
}

}  // namespace
}  // namespace vexa

int main() {
  vexa::Run();
}
