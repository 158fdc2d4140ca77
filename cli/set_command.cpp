// set: fields of chosen records, from scripts.
#include <memory>
#include <sstream>

#include "cli/commands.h"
#include "core/assign.h"
#include "core/bin_file.h"
#include "core/nearest_word.h"

namespace vexa {

namespace {

struct SetArguments {
  std::string file, output, sdb = "1";
  std::vector<std::string> words;  // paths and assignments in turn
};

struct KindWord {
  const char* word;
  RecordKind kind;
};
constexpr KindWord kSatelliteWords[] = {{"satellite", RecordKind::kSatellite},
                                        {"carrier", RecordKind::kCarrier},
                                        {"service", RecordKind::kService}};

[[noreturn]] void Wrong(const std::string& word, const std::string& why) {
  throw CLI::ValidationError("\"" + word + "\"", why);
}

RecordNumbers NumbersIn(const std::string& path, const std::string& text) {
  const std::string why = CheckList(text);
  if (!why.empty()) Wrong(path, why);
  return text == "all" ? RecordNumbers{true, {}} : RecordNumbers{false, ListRanges(text)};
}

// "satellite 1-29 carrier 2 service all"; "lnb 1"; "ubi all".
Assignment ParsePath(const std::string& path) {
  std::istringstream words(path);
  std::vector<std::string> parts;
  for (std::string word; words >> word;) parts.push_back(word);
  Assignment assignment;
  if (parts.size() == 2 && (parts[0] == "lnb" || parts[0] == "ubi")) {
    assignment.kind = parts[0] == "lnb" ? RecordKind::kLnb : RecordKind::kUbi;
    assignment.path = {NumbersIn(path, parts[1])};
    return assignment;
  }
  bool good = parts.size() % 2 == 0 && !parts.empty() && parts.size() <= 2 * std::size(kSatelliteWords);
  for (size_t i = 0; good && i < parts.size() / 2; ++i) {
    good = parts[2 * i] == kSatelliteWords[i].word;
    if (!good) break;
    assignment.kind = kSatelliteWords[i].kind;
    assignment.path.push_back(NumbersIn(path, parts[2 * i + 1]));
  }
  static const std::vector<std::string> kinds = {"lnb", "satellite", "carrier", "service", "ubi"};
  for (size_t i = 0; i < parts.size(); i += 2) {
    if (std::find(kinds.begin(), kinds.end(), parts[i]) == kinds.end())
      Wrong(path, "\"" + parts[i] + "\" names no records" + NearestText(parts[i], kinds));
  }
  if (!good) Wrong(path, "is no path: lnb LIST, satellite LIST [carrier LIST [service LIST]] or ubi LIST");
  return assignment;
}

std::vector<Assignment> ParseAssignments(const std::vector<std::string>& words) {
  std::vector<Assignment> assignments;
  for (const std::string& word : words) {
    const size_t sign = word.find('=');
    if (sign == std::string::npos) {
      if (!assignments.empty() && assignments.back().fields.empty())
        Wrong(word, "no FIELD=VALUE stands before this path");
      assignments.push_back(ParsePath(word));
      continue;
    }
    if (assignments.empty()) Wrong(word, "a path must stand before it");
    Assignment& assignment = assignments.back();
    const std::string key = word.substr(0, sign), value = word.substr(sign + 1);
    const std::string why = WrongValueText(assignment.kind, key, value);
    if (!why.empty()) Wrong(word, why);
    assignment.fields.emplace_back(key, value);
  }
  if (assignments.empty()) Wrong("PATH", "at least one path with FIELD=VALUE is needed");
  if (assignments.back().fields.empty()) Wrong(words.back(), "no FIELD=VALUE follows");
  return assignments;
}

void Set(CommandState& state, const SetArguments& arguments) {
  const std::vector<Assignment> assignments = ParseAssignments(arguments.words);
  Document document = OpenDocument(state, arguments.file);
  const size_t sdb = ParseList(state, arguments.sdb, document.sdbs.size(), "SDB").front();
  std::string wrong;
  switch (AssignFields(state.context.messages, document, sdb, assignments, wrong)) {
    case AssignResult::kWrongValue:
      throw CLI::ValidationError("FIELD=VALUE", wrong);
    case AssignResult::kRefused:
      throw CommandFailed{};
    case AssignResult::kDone:
      SaveDocument(state, document, arguments.file, arguments.output);
  }
}

}  // namespace

void AddSetCommand(CLI::App& program, CommandState& state) {
  const auto arguments = std::make_shared<SetArguments>();
  CLI::App& set = *program.add_subcommand("set", "Set fields of records by the rules of the record dialogs");
  set.add_option("FILE", arguments->file, "Database file")->required();
  set.add_option("PATH FIELD=VALUE", arguments->words,
                 "Records (\"satellite 1-29\", \"satellite 3 carrier 2 service all\", \"lnb 1\", \"ubi 1\") "
                 "and what to set in them "
                 "(position=1.. angle=19.2E type=Universal)")
      ->required();
  set.add_option("-o,--output", arguments->output, "Database file to write")->required();
  set.add_option("--sdb", arguments->sdb, "Which SDB, from 1")->check(CheckPlace)->capture_default_str();
  set.callback([&state, arguments] { Set(state, *arguments); });
}

}  // namespace vexa
