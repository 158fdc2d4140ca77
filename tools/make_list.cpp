// make_list OUT: a channel list in the format that the extension names (.sdx, .dvb, .dat).
#include <CLI/CLI.hpp>
#include <iostream>

#include "platform/files.h"
#include "tools/list_generator.h"

namespace {

int Run(const std::string& output, const vexa::ListSettings& settings) {
  const vexa::Path path = vexa::PathFromUtf8(output);
  const std::string extension = vexa::Utf8FromPath(path.extension());
  std::string list;
  if (extension == ".sdx") {
    list = vexa::MakeSatcodxList(settings);
  } else if (extension == ".dvb") {
    list = vexa::MakeDvb2000List(settings);
  } else if (extension == ".dat") {
    list = vexa::MakeLyngsatList(settings);
  } else {
    std::cerr << "error: " << output << " is neither .sdx, .dvb nor .dat\n";
    return 2;
  }
  const std::span<const uint8_t> bytes(reinterpret_cast<const uint8_t*>(list.data()), list.size());
  if (vexa::WriteWholeFile(path, bytes) == vexa::WriteResult::kDone) return 0;
  std::cerr << "error: cannot write " << output << '\n';
  return 1;
}

}  // namespace

int main(int count, char** arguments) {
  CLI::App program("Makes a channel list of plausible satellites, transponders and services", "make_list");
  vexa::ListSettings settings;
  std::string output;
  program.add_option("OUT", output, "List to write: .sdx, .dvb or .dat")->required();
  program.add_option("--records", settings.records, "Entries (default 300)");
  program.add_option("--seed", settings.seed, "The same seed gives the same list (default 1)");
  program
      .add_option("--per-transponder", settings.per_transponder,
                  "Services of a transponder, at most (default 8)")
      ->check(CLI::Range(1, 1000));
  program.add_option("--per-satellite", settings.per_satellite,
                     "Entries of a satellite (default: spread evenly)");
  program.add_flag("--layout-b", settings.layout_b, "SatcoDX: format version 04, satellite names at the end");
  program.add_flag("--line-ends", settings.line_ends, "SatcoDX: a line feed behind each record");
  CLI11_PARSE(program, count, arguments);
  return Run(output, settings);
}
