#include "cli/usage.h"

#include <toml++/toml.h>
#include <zlib.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "core/nearest_word.h"
#include "generated/version.h"
#include "platform/file_identity.h"

namespace vexa {

namespace {

const CLI::App& ChosenCommand(const CLI::App& program) {
  const CLI::App* command = &program;
  while (!command->get_subcommands().empty()) command = command->get_subcommands().front();
  return *command;
}

// What `word`, a wrong option, may have been meant for: a long one for no short one.
std::vector<std::string> OptionNames(const CLI::App& command, const std::string& word) {
  std::vector<std::string> names;
  for (const CLI::App* app = &command; app; app = app->get_parent()) {
    for (const CLI::Option* option : app->get_options()) {
      for (const std::string& name : option->get_snames()) {
        if (!word.starts_with("--")) names.push_back("-" + name);
      }
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
  }
  return names;
}

}  // namespace

void ExpectApart(const std::vector<NamedPath>& inputs, const std::vector<NamedPath>& outputs) {
  for (size_t i = 0; i < outputs.size(); ++i) {
    std::error_code error;
    const auto status = std::filesystem::status(outputs[i].path, error);
    if (outputs[i].path.empty()) continue;
    // What goes to a device or a pipe takes nobody's place.
    const bool stream = std::filesystem::is_character_file(status) || std::filesystem::is_fifo(status);
    const auto refuse = [&](const NamedPath& other, const char* what) {
      if (other.path.empty() || (stream && !other.line) || !SameFile(outputs[i].path, other.path)) return;
      throw CLI::ValidationError(outputs[i].option,
                                 "\"" + Utf8FromPath(outputs[i].path) + "\" is " + what + " " + other.option);
    };
    for (const NamedPath& input : inputs) refuse(input, "also read, as");
    for (size_t j = 0; j < i; ++j) refuse(outputs[j], "also written, as");
  }
}

CLI::Validator OneOf(std::vector<std::string> words) {
  std::string list;
  for (const std::string& word : words) list += (list.empty() ? "" : ",") + word;
  return CLI::Validator(
      [words = std::move(words)](std::string& text) {
        if (std::find(words.begin(), words.end(), text) != words.end()) return std::string();
        return "\"" + text + "\" is no value of it" + NearestText(text, words);
      },
      list);
}

std::string UsageText(const CLI::App& program, const CLI::ParseError& error) {
  const int code = error.get_exit_code();
  const bool required = code == static_cast<int>(CLI::ExitCodes::RequiredError);
  const std::vector<std::string> left = program.remaining(true);
  const CLI::App& command = ChosenCommand(program);
  std::vector<std::string> commands;
  for (const CLI::App* inner : command.get_subcommands({})) commands.push_back(inner->get_name());
  if (required && left.empty() && !commands.empty()) {
    std::string list;
    for (const std::string& inner : commands) list += (list.empty() ? "" : ", ") + inner;
    return CommandName(program) + " needs one of its commands: " + list;
  }
  if ((!required && code != static_cast<int>(CLI::ExitCodes::ExtrasError)) || left.empty())
    return error.what();
  const std::string word =
      left.front().substr(0, left.front().starts_with('-') ? left.front().find('=') : left.front().npos);
  const std::string name = CommandName(program);
  if (word.size() > 1 && word.starts_with('-'))
    return "\"" + word + "\" is no option of " + name + NearestText(word, OptionNames(command, word));
  if (commands.empty()) return "\"" + word + "\" is one word too many for " + name;
  return "\"" + word + "\" is no command of " + name + NearestText(word, commands);
}

void DescribeDefaults(CLI::App& command) {
  for (CLI::Option* option : command.get_options()) {
    if (option == command.get_help_ptr() || option == command.get_version_ptr()) continue;
    std::string text = option->get_default_str();
    option->default_str("");
    if (option->get_required() || option->get_description().find("default") != std::string::npos) continue;
    if (text.starts_with('[') && text.ends_with(']')) text = text.substr(1, text.size() - 2);
    if (text.empty()) text = option->get_items_expected_max() == 0 ? "off" : "none";
    option->description(option->get_description() + " (default: " + text + ")");
  }
  for (CLI::App* inner : command.get_subcommands({})) DescribeDefaults(*inner);
}

std::string CommandName(const CLI::App& program) {
  std::string name = "vexa";
  for (const CLI::App* command = &program; !command->get_subcommands().empty();) {
    command = command->get_subcommands().front();
    name += " " + command->get_name();
  }
  return name;
}

std::string VersionText() {
  return Format("vexa " VEXA_VERSION "\nzlib %s\nCLI11 %s\ntoml++ %d.%d.%d\nnlohmann/json %d.%d.%d",
                zlibVersion(), CLI11_VERSION, TOML_LIB_MAJOR, TOML_LIB_MINOR, TOML_LIB_PATCH,
                NLOHMANN_JSON_VERSION_MAJOR, NLOHMANN_JSON_VERSION_MINOR, NLOHMANN_JSON_VERSION_PATCH);
}

}  // namespace vexa
