// make_manual FOLDER: what the command line tells of itself, for those who install it: a manual page for the
// program and for each command ("vexa-upload-adb.1"), completions for bash, zsh and fish, and the page of the
// help ("command-line.md").
#include <algorithm>
#include <iostream>

#include "cli/commands.h"
#include "generated/version.h"
#include "platform/files.h"
#include "platform/text.h"

namespace vexa {
namespace {

constexpr const char* kStatusText =
    "0 when done; 1 when refused or failed, and when check, diff, verify or urt show find something; 2 for "
    "wrong usage. Messages go to standard error, results to standard output; an output file appears whole "
    "or not at all.";

struct OptionText {
  std::string names;  // "--format", "-o, --output"; a positional's name
  std::string value;  // "TEXT"; empty for a switch
  std::string description;
  std::string completed;           // the long name without its dashes; empty for a positional
  std::vector<std::string> words;  // the values that it takes, where they are words of a list
  bool positional = false, required = false;
};

struct Command {
  std::string name;  // "upload adb"; empty for the program
  std::string description;
  std::vector<OptionText> options;
  std::vector<std::string> inner;  // "upload": "adb", "sdb", "urt"
};

OptionText Describe(const CLI::App& command, const CLI::Option& option) {
  OptionText text;
  text.positional = option.get_positional();
  text.required = option.get_required();
  text.description = option.get_description();
  for (const std::string& name : option.get_snames()) text.names += "-" + name + ", ";
  for (const std::string& name : option.get_lnames()) text.names += "--" + name;
  if (text.positional)
    text.names = option.get_name(true) + (option.get_items_expected_max() > 1 ? "..." : "");
  if (!option.get_lnames().empty()) text.completed = option.get_lnames().front();
  if (&option == command.get_help_ptr() || option.get_items_expected_max() == 0) return text;
  // "TEXT", "TEXT:one,two" or "UINT:UINT in [127 - 65535]".
  const std::string type = option.get_type_name();
  const size_t colon = type.find(':');
  text.value = type.substr(0, colon);
  if (colon == type.npos || type.find(' ') != type.npos) return text;
  std::istringstream list(type.substr(colon + 1));
  for (std::string word; std::getline(list, word, ',');) text.words.push_back(word);
  return text;
}

void Gather(const CLI::App& app, const std::string& name, std::vector<Command>& commands) {
  Command command{name, app.get_description(), {}, {}};
  for (const CLI::Option* option : app.get_options()) command.options.push_back(Describe(app, *option));
  for (const CLI::App* inner : app.get_subcommands({})) command.inner.push_back(inner->get_name());
  commands.push_back(command);
  for (const CLI::App* inner : app.get_subcommands({}))
    Gather(*inner, name.empty() ? inner->get_name() : name + " " + inner->get_name(), commands);
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

// "upload adb" -> "vexa upload adb", with another sign between the words.
std::string Full(const std::string& name, const std::string& between = " ") {
  return name.empty() ? "vexa" : "vexa" + between + Replaced(name, " ", between);
}

std::string Usage(const Command& command) {
  std::string usage = Full(command.name) + " [OPTIONS]";
  if (!command.inner.empty()) return usage + " COMMAND";
  for (const OptionText& option : command.options) {
    if (!option.positional) continue;
    usage += option.required ? " " + option.names : " [" + option.names + "]";
  }
  return usage;
}

std::string Roff(const std::string& text) {
  const std::string escaped = Replaced(Replaced(text, "\\", "\\e"), "-", "\\-");
  return escaped.starts_with('.') || escaped.starts_with('\'') ? "\\&" + escaped : escaped;
}

bool TakesConfiguration(const Command& command) {
  return std::any_of(command.options.begin(), command.options.end(),
                     [](const OptionText& option) { return option.completed == "ecf"; });
}

std::string ManualPage(const Command& command, const std::vector<Command>& all) {
  const std::string title = Full(command.name, "-");
  std::string page = ".TH " + title + " 1 \"\" \"vexa " VEXA_VERSION "\" \"Vexa Editor\"\n.SH NAME\n" +
                     Roff(title + " - " + command.description) + "\n.SH SYNOPSIS\n.B " +
                     Roff(Usage(command)) + "\n.SH OPTIONS\n";
  for (const OptionText& option : command.options) {
    page += ".TP\n.B " +
            Roff(option.names + (option.value.empty() || option.positional ? "" : " " + option.value)) +
            "\n" + Roff(option.description);
    if (option.required && !option.positional) page += " (required)";
    std::string words;
    for (const std::string& word : option.words) words += (words.empty() ? "" : ", ") + word;
    page += words.empty() ? "\n" : "\n.br\nOne of: " + Roff(words) + "\n";
  }
  if (!command.inner.empty()) {
    page += ".SH COMMANDS\n";
    for (const Command& other : all) {
      if (other.name.empty() || !other.inner.empty() ||
          !Full(other.name).starts_with(Full(command.name) + " "))
        continue;
      page += ".TP\n.BR " + Roff(Full(other.name, "-")) + " (1)\n" + Roff(other.description) + "\n";
    }
  }
  page += ".SH EXIT STATUS\n" + Roff(kStatusText) + "\n.SH ENVIRONMENT\n";
  if (command.name.empty() || TakesConfiguration(command))
    page += ".TP\n.B VEXA_ECF\nThe configuration file that holds without \\-\\-ecf.\n";
  page += ".TP\n.B TMPDIR\nThe folder for temporary files.\n";
  if (!command.name.empty()) page += ".SH SEE ALSO\n.BR vexa (1)\n";
  return page;
}

std::string HelpPage(const std::vector<Command>& all) {
  std::string page = "# The command line\n\nThe exit status is " + std::string(kStatusText) + "\n";
  for (const Command& command : all) {
    if (!command.inner.empty() && !command.name.empty()) continue;
    page +=
        "\n## " + Full(command.name) + "\n\n" + command.description + ".\n\n    " + Usage(command) + "\n\n";
    for (const OptionText& option : command.options) {
      page += "- `" + option.names + (option.value.empty() || option.positional ? "" : " " + option.value) +
              "`: " + Replaced(option.description, "<", "&lt;") + (option.required ? " (required)" : "") +
              "\n";
    }
  }
  return page;
}

std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

std::string BashCompletion(const std::vector<Command>& all) {
  std::string text =
      "# Completion of vexa for bash.\n_vexa() {\n  local word command=\"\" next i words=\"\"\n"
      "  local current=\"${COMP_WORDS[COMP_CWORD]}\" before=\"${COMP_WORDS[COMP_CWORD-1]}\"\n"
      "  local -A inner options values\n";
  for (const Command& command : all) {
    std::vector<std::string> names;
    for (const OptionText& option : command.options) {
      if (option.completed.empty()) continue;
      names.push_back("--" + option.completed);
      if (!option.words.empty())
        text +=
            "  values['" + command.name + " --" + option.completed + "']='" + Joined(option.words) + "'\n";
      else if (!option.value.empty())
        text += "  values['" + command.name + " --" + option.completed + "']=' '\n";
    }
    if (!command.inner.empty()) text += "  inner['" + command.name + "']='" + Joined(command.inner) + "'\n";
    text += "  options['" + command.name + "']='" + Joined(names) + "'\n";
  }
  // An associative array has no empty key.
  text = Replaced(Replaced(text, "inner['']", "inner['vexa']"), "options['']", "options['vexa']");
  return text +
         "  for ((i = 1; i < COMP_CWORD; ++i)); do\n"
         "    word=\"${COMP_WORDS[i]}\"\n"
         "    for next in ${inner[${command:-vexa}]}; do\n"
         "      if [ \"$word\" = \"$next\" ]; then command=\"${command:+$command }$word\"; break; fi\n"
         "    done\n"
         "  done\n"
         "  words=\"${values[$command $before]}\"\n"
         "  if [ \"$words\" = ' ' ]; then words=\"\"\n"
         "  elif [ -z \"$words\" ]; then\n"
         "    case \"$current\" in\n"
         "      -*) words=\"${options[${command:-vexa}]}\" ;;\n"
         "      *) words=\"${inner[${command:-vexa}]}\" ;;\n"
         "    esac\n"
         "  fi\n"
         "  if [ -n \"$words\" ]; then COMPREPLY=($(compgen -W \"$words\" -- \"$current\"))\n"
         "  else COMPREPLY=($(compgen -f -- \"$current\")); fi\n"
         "}\n"
         "complete -o filenames -F _vexa vexa\n";
}

// A text between single quotes of a shell.
std::string Quoted(const std::string& text) {
  return "'" + Replaced(text, "'", "'\\''") + "'";
}

std::string ZshFunction(const Command& command) {
  std::string text = "_vexa" + Replaced(command.name.empty() ? "" : " " + command.name, " ", "_") + "() {\n";
  if (!command.inner.empty()) text += "  local state\n";
  text += "  _arguments -C";
  const auto plain = [](const std::string& description) {
    return Replaced(Replaced(Replaced(description, "[", "("), "]", ")"), ":", "\\:");
  };
  for (const OptionText& option : command.options) {
    const std::string action = option.words.empty() ? "_files" : "(" + Joined(option.words) + ")";
    if (option.positional)
      text += " \\\n    " + Quoted("*:" + option.names + ":_files");
    else
      text += " \\\n    " + Quoted("--" + option.completed + "[" + plain(option.description) + "]" +
                                   (option.value.empty() ? "" : ":" + option.value + ":" + action));
  }
  if (command.inner.empty()) return text + "\n}\n";
  text += " \\\n    '1:command:(" + Joined(command.inner) +
          ")' '*::word:->inner'\n  [ -n \"$state\" ] || return\n"
          "  case \"${words[1]}\" in\n";
  const std::string prefix =
      command.name.empty() ? "_vexa_" : "_vexa_" + Replaced(command.name, " ", "_") + "_";
  for (const std::string& inner : command.inner) text += "    " + inner + ") " + prefix + inner + " ;;\n";
  return text + "  esac\n}\n";
}

std::string ZshCompletion(const std::vector<Command>& all) {
  std::string text = "#compdef vexa\n";
  for (const Command& command : all) text += ZshFunction(command);
  return text + "if [ \"$funcstack[1]\" = _vexa ]; then _vexa \"$@\"; else compdef _vexa vexa; fi\n";
}

std::string FishCompletion(const std::vector<Command>& all) {
  std::string text = "# Completion of vexa for fish.\n";
  for (const Command& command : all) {
    std::string seen;
    std::istringstream words(command.name);
    for (std::string word; words >> word;)
      seen += (seen.empty() ? "" : "; and ") + ("__fish_seen_subcommand_from " + word);
    const std::string line = "complete -c vexa" + (seen.empty() ? "" : " -n " + Quoted(seen));
    if (!command.inner.empty()) {
      const std::string none = "not __fish_seen_subcommand_from " + Joined(command.inner);
      text += "complete -c vexa -f -n " + Quoted(seen.empty() ? none : seen + "; and " + none) + " -a " +
              Quoted(Joined(command.inner)) + "\n";
    }
    for (const OptionText& option : command.options) {
      if (option.completed.empty()) continue;
      text += line + " -l " + option.completed +
              (option.value.empty()   ? ""
               : option.words.empty() ? " -r"
                                      : " -x -a " + Quoted(Joined(option.words))) +
              " -d " + Quoted(option.description) + "\n";
    }
  }
  return text;
}

int Run(const Path& folder) {
  CommandState state;
  CLI::App program;
  DescribeProgram(program, state);
  std::vector<Command> all;
  Gather(program, "", all);
  std::vector<std::pair<std::string, std::string>> files = {{"command-line.md", HelpPage(all)},
                                                            {"vexa.bash", BashCompletion(all)},
                                                            {"_vexa", ZshCompletion(all)},
                                                            {"vexa.fish", FishCompletion(all)}};
  for (const Command& command : all) {
    if (command.name.empty() || command.inner.empty())
      files.emplace_back(Full(command.name, "-") + ".1", ManualPage(command, all));
  }
  for (const auto& [name, text] : files) {
    const std::span<const uint8_t> bytes(reinterpret_cast<const uint8_t*>(text.data()), text.size());
    if (WriteWholeFile(folder / name, bytes) == WriteResult::kDone) continue;
    std::cerr << "error: cannot write " << Utf8FromPath(folder / name) << '\n';
    return 1;
  }
  return 0;
}

}  // namespace
}  // namespace vexa

int main(int count, char** arguments) {
  if (count != 2) {
    std::cerr << "usage: make_manual FOLDER\n";
    return 2;
  }
  return vexa::Run(vexa::PathFromUtf8(arguments[1]));
}
