// check, sort: a database judged, a database put in order.
#include <nlohmann/json.hpp>
#include <set>

#include "cli/commands.h"
#include "cli/usage.h"
#include "core/bin_file.h"
#include "core/check.h"
#include "core/nearest_word.h"
#include "core/order_like.h"
#include "core/sort.h"
#include "import/any_database.h"

namespace vexa {

namespace {

struct SortArguments {
  std::string file, output, satellites, carriers, services, sdbs = "all", like;
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
    if (name == names.end()) {
      std::vector<std::string> keys;
      for (const auto& row : names) keys.push_back(row.first);
      throw CLI::ValidationError(option, "\"" + word + "\" is no key of this list" + NearestText(word, keys));
    }
    if (!seen.insert(name->second).second)
      throw CLI::ValidationError(option, "key \"" + word + "\" is named twice");
    sort.keys.push_back(name->second);
    start = end + 1;
  }
  return sort;
}

AnyDatabase ReadOldOrder(CommandState& state, const std::string& file) {
  AnyDatabase old;
  ImportSteps steps;
  steps.tell = [&](const std::vector<ListNote>& notes) { TellEach(state, notes); };
  if (!OpenAnyDatabase(state.context, PathFromUtf8(file), {}, steps, *FindCodePage("Windows-1252"), old))
    throw CommandFailed{};
  return old;
}

void SortLike(CommandState& state, const CLI::App& command, const SortArguments& arguments) {
  for (const char* option : {"--satellites", "--carriers", "--services", "--descending"}) {
    if (command.count(option) > 0) throw CLI::ValidationError(option, "does not go with --like");
  }
  ExpectApart({{"--like", PathFromUtf8(arguments.like)}}, {{"--output", PathFromUtf8(arguments.output)}});
  const AnyDatabase old = ReadOldOrder(state, arguments.like);
  Document document = OpenDocument(state, arguments.file);
  OrderSummary summary;
  for (const size_t sdb : ParseList(state, arguments.sdbs, document.sdbs.size(), "SDB")) {
    if (sdb < old.document.sdbs.size())
      OrderLike(*old.document.sdbs[sdb].database, *document.sdbs[sdb].database, old.favourites, summary);
  }
  SaveDocument(state, document, arguments.file, arguments.output);
  Tell(state.context.messages, Icon::kInformation, "%s", SummaryText(summary).c_str());
}

void Sort(CommandState& state, const CLI::App& command, const SortArguments& arguments) {
  if (command.count("--like") > 0) return SortLike(state, command, arguments);
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
  const auto sdbs = ParseList(state, arguments.sdbs, document.sdbs.size(), "SDB");
  const Path output = PathFromUtf8(arguments.output);
  ExpectSaved(state, arguments.output, SortToFile(state.context, document, sdbs, options, output));
}

std::string FindingsJson(const std::vector<Finding>& findings) {
  using Json = nlohmann::ordered_json;
  Json root = {{"schema", "vexa-findings/1"}, {"findings", Json::array()}};
  for (const Finding& finding : findings)
    root["findings"].push_back({{"path", finding.name}, {"text", finding.text}});
  return root.dump(2) + "\n";
}

struct CheckArguments {
  std::string file;
  bool duplicates = false, json = false;
};

void Check(CommandState& state, const CheckArguments& arguments) {
  const Document document = OpenDocument(state, arguments.file);
  const auto findings = FindFaults(document, arguments.duplicates);
  if (arguments.json) {
    state.output = FindingsJson(findings);
  } else {
    for (const Finding& finding : findings) state.output += finding.line() + "\n";
  }
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
  sort.add_option("--like", arguments->like,
                  "Take the order and the favourites of this older database, or the order of a list");
  sort.callback([&state, &sort, arguments] { Sort(state, sort, *arguments); });
}

void AddCheckCommand(CLI::App& program, CommandState& state) {
  const auto arguments = std::make_shared<CheckArguments>();
  CLI::App& check = *program.add_subcommand("check", "Apply the rules of the record dialogs and every limit");
  check.add_option("FILE", arguments->file, "Database file")->required();
  check.add_flag("--duplicates", arguments->duplicates, "Tell records that are there twice as well");
  check.add_flag("--json", arguments->json, "The findings as one JSON document");
  check.callback([&state, arguments] { Check(state, *arguments); });
}

}  // namespace vexa
