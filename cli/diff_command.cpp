// diff: what differs between two databases.
#include <memory>
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "core/compare.h"

namespace vexa {

namespace {

using Json = nlohmann::ordered_json;

struct DiffArguments {
  std::string first, second, sdb = "1";
  bool json = false, summary = false;
};

Json FieldsJson(const Difference& difference) {
  if (difference.moved > 0) return {{"order", difference.moved}};
  if (difference.fields.empty()) return nullptr;
  Json fields = Json::object();
  for (const FieldChange& change : difference.fields) {
    Json sides = Json::array();
    for (const auto& side : {change.before, change.after})
      std::visit([&](const auto& value) { sides.push_back(value); }, side);
    fields[change.key] = std::move(sides);
  }
  return fields;
}

std::string DiffJson(const std::vector<Difference>& differences) {
  Json root = {{"schema", "vexa-diff/1"}, {"differences", Json::array()}};
  for (const Difference& difference : differences) {
    root["differences"].push_back({{"sign", std::string(1, difference.sign)},
                                   {"path", difference.path},
                                   {"name", difference.has_name ? Json(difference.name) : Json()},
                                   {"from", difference.from.empty() ? Json() : Json(difference.from)},
                                   {"fields", FieldsJson(difference)}});
  }
  return root.dump(2) + "\n";
}

void Diff(CommandState& state, const DiffArguments& arguments) {
  const Document first = OpenDocument(state, arguments.first), second = OpenDocument(state, arguments.second);
  const size_t first_sdb = ParseList(state, arguments.sdb, first.sdbs.size(), "SDB").front();
  const size_t second_sdb = ParseList(state, arguments.sdb, second.sdbs.size(), "SDB").front();
  const auto differences = CompareDocuments(first, first_sdb, second, second_sdb);
  if (arguments.json) {
    state.output = DiffJson(differences);
  } else if (arguments.summary) {
    state.output = DifferenceSummary(differences);
  } else {
    state.output = DifferenceLines(differences);
  }
  if (differences.empty()) return;
  state.print_output_on_failure = true;
  throw CommandFailed{};
}

}  // namespace

void AddDiffCommand(CLI::App& program, CommandState& state) {
  const auto arguments = std::make_shared<DiffArguments>();
  CLI::App& diff = *program.add_subcommand(
      "diff", "Tell what differs between two databases; status 1 when something does");
  diff.add_option("A", arguments->first, "Database file before")->required();
  diff.add_option("B", arguments->second, "Database file after")->required();
  diff.add_option("--sdb", arguments->sdb, "Which SDB of both, from 1")
      ->check(CheckPlace)
      ->capture_default_str();
  CLI::Option* json = diff.add_flag("--json", arguments->json, "One JSON document instead of lines");
  diff.add_flag("--summary", arguments->summary, "One line a kind of record")->excludes(json);
  diff.callback([&state, arguments] { Diff(state, *arguments); });
}

}  // namespace vexa
