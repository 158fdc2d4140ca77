// check, sort: a database judged, a database put in order.
#include <set>

#include "cli/commands.h"
#include "core/bin_file.h"
#include "core/check.h"
#include "core/sort.h"

namespace vexa {

namespace {

struct SortArguments {
  std::string file, output, satellites, carriers, services, sdbs = "all";
  bool descending = false;
};

template <class Key>
using KeyNames = std::vector<std::pair<std::string, Key>>;

const KeyNames<SatelliteKey> kSatelliteKeys = {
    {"name", SatelliteKey::kName}, {"flag", SatelliteKey::kFlag}, {"angle", SatelliteKey::kAngle}};
const KeyNames<CarrierKey> kCarrierKeys = {{"name", CarrierKey::kName},
                                           {"frequency", CarrierKey::kFrequency},
                                           {"symbol-rate", CarrierKey::kSymbolRate}};
const KeyNames<ServiceKey> kServiceKeys = {
    {"name", ServiceKey::kName}, {"status", ServiceKey::kStatus}, {"type", ServiceKey::kType}};

template <class Key>
SortKeys<Key> ParseKeys(const std::string& option, const std::string& text, const KeyNames<Key>& names,
                        bool descending) {
  SortKeys<Key> sort{{}, descending};
  std::set<Key> seen;
  for (size_t start = 0; start <= text.size();) {
    const size_t end = std::min(text.find(',', start), text.size());
    const std::string word = text.substr(start, end - start);
    const auto name =
        std::find_if(names.begin(), names.end(), [&](const auto& row) { return row.first == word; });
    if (name == names.end()) throw CLI::ValidationError(option, "\"" + word + "\" is no key of this list");
    if (!seen.insert(name->second).second)
      throw CLI::ValidationError(option, "key \"" + word + "\" is named twice");
    sort.keys.push_back(name->second);
    start = end + 1;
  }
  return sort;
}

void Sort(CommandState& state, const CLI::App& command, const SortArguments& arguments) {
  SortOptions options;
  if (command.count("--satellites") > 0)
    options.satellites =
        ParseKeys("--satellites", arguments.satellites, kSatelliteKeys, arguments.descending);
  if (command.count("--carriers") > 0)
    options.carriers = ParseKeys("--carriers", arguments.carriers, kCarrierKeys, arguments.descending);
  if (command.count("--services") > 0)
    options.services = ParseKeys("--services", arguments.services, kServiceKeys, arguments.descending);
  const Document document = OpenDocument(state, arguments.file);
  ExpectWhole(state, document, arguments.file, arguments.output);
  const auto sdbs = ParseList(state, arguments.sdbs, document.sdbs.size());
  const Path output = PathFromUtf8(arguments.output);
  const size_t told = state.told.size();
  ExpectSaved(state, arguments.output, told, SortToFile(state.context, document, sdbs, options, output));
}

void Check(CommandState& state, const std::string& file) {
  const Document document = OpenDocument(state, file);
  const auto findings = CheckDatabase(document);
  for (const std::string& line : findings) state.output += line + "\n";
  if (findings.empty()) return;
  state.print_output_on_failure = true;
  throw CommandFailed{};
}

}  // namespace

void AddSortCommand(CLI::App& program, CommandState& state) {
  const auto arguments = std::make_shared<SortArguments>();
  CLI::App& sort = *program.add_subcommand("sort", "Sort satellites, carriers and services of a database");
  sort.add_option("FILE", arguments->file, "Database file")->required();
  sort.add_option("-o,--output", arguments->output, "Database file to write")->required();
  sort.add_option("--satellites", arguments->satellites, "Keys, most important first: name,flag,angle");
  sort.add_option("--carriers", arguments->carriers,
                  "Keys, most important first: name,frequency,symbol-rate");
  sort.add_option("--services", arguments->services, "Keys, most important first: name,status,type");
  sort.add_flag("--descending", arguments->descending, "Z to A, for every kind named");
  sort.add_option("--sdb", arguments->sdbs, "SDBs to sort: 1,3-5 or all")->check(CheckList);
  sort.callback([&state, &sort, arguments] { Sort(state, sort, *arguments); });
}

void AddCheckCommand(CLI::App& program, CommandState& state) {
  const auto file = std::make_shared<std::string>();
  CLI::App& check = *program.add_subcommand("check", "Apply the rules of the record dialogs and every limit");
  check.add_option("FILE", *file, "Database file")->required();
  check.callback([&state, file] { Check(state, *file); });
}

}  // namespace vexa
