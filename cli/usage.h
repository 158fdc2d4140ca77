// Wrong usage, told with the word that is wrong and the nearest right one; and the help's defaults.
#pragma once

#include <string>
#include <vector>

#include "cli/commands.h"

namespace vexa {

// A check of an option that takes one of these words.
CLI::Validator OneOf(std::vector<std::string> words);
// What the wrong usage that `error` reports is, in one line.
std::string UsageText(const CLI::App& program, const CLI::ParseError& error);
// Every option's description tells its default.
void DescribeDefaults(CLI::App& command);
// "vexa upload adb": the command that was chosen, as far as it is known.
std::string CommandName(const CLI::App& program);
// The program's version and those of the libraries in it.
std::string VersionText();

// A file or folder that a command reads or writes, with the option that names it. An empty path is none.
struct NamedPath {
  std::string option;
  Path path;
  bool line = false;  // the receiver's: no output, not even one that is a device
};
// Throws wrong usage when an output is an input, or the same as another output: links, letter case where the
// system ignores it and the many forms of a path are seen through. Opens nothing. Pipes and devices are what
// they are, but for the receiver's line.
void ExpectApart(const std::vector<NamedPath>& inputs, const std::vector<NamedPath>& outputs);

}  // namespace vexa
