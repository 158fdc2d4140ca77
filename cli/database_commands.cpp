// info, save: the database file itself. check, sort and export have files of their own.
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/usage.h"
#include "core/bin_file.h"
#include "core/rules.h"
#include "platform/text.h"

namespace vexa {

namespace {

struct SaveOptions {
  std::string file, output, sdbs = "all", ubis = "all", satellites, version = "1.0", initials;
  std::string compress_bin, compress_sdb;
};

std::string InfoJson(const BinSizes& sizes, const Document& document) {
  using Json = nlohmann::ordered_json;
  Json root = {{"schema", "vexa-info/1"}, {"sdbs", Json::array()}};
  for (size_t i = 0; i < document.sdbs.size(); ++i) {
    const StaticDatabase& database = *document.sdbs[i].database;
    root["sdbs"].push_back({{"name", Utf8FromLatin(document.sdbs[i].name)},
                            {"compressed", database.compressed ? 1 : 0},
                            {"lnbs", database.lnb_count},
                            {"satellites", database.satellites.size()},
                            {"carriers", database.carriers.size()},
                            {"services", database.services.size()},
                            {"bytes", sizes.sdbs[i]}});
  }
  root["ubis"] = document.ubis.size();
  root["ubi_bytes"] = sizes.ubis;
  root["bytes"] = sizes.total;
  root["compressed"] = document.compress_payload ? 1 : 0;
  return root.dump(2) + "\n";
}

void Info(CommandState& state, const std::string& file, bool json) {
  const Document document = OpenDocument(state, file);
  if (json) {
    const auto sizes = SizesWhenSaved(state.context, document);
    if (!sizes) throw CommandFailed{};
    state.output = InfoJson(*sizes, document);
    return;
  }
  state.output = BinInformation(state.context, document) + "\n";
}

void Save(CommandState& state, const SaveOptions& options) {
  Document document = OpenDocument(state, options.file);
  ExpectWhole(state, document, options.file, options.output);
  const auto sdbs = ParseList(state, options.sdbs, document.sdbs.size(), "SDB");
  const auto ubis = ParseList(state, options.ubis, document.ubis.size(), "user box record");
  if (!options.compress_bin.empty()) document.compress_payload = options.compress_bin == "on";
  if (!options.compress_sdb.empty()) {
    document.compress_ubis = options.compress_sdb == "on";
    for (OpenSdb& sdb : document.sdbs) sdb.database->compressed = options.compress_sdb == "on";
  }
  BinVersion version;
  std::tie(version.major, version.minor) = *ParseVersion(options.version);
  version.initials = LatinFromUtf8(options.initials);
  const Path output = PathFromUtf8(options.output);
  std::optional<uint64_t> saved;
  if (options.satellites.empty()) {
    saved = SaveBin(state.context, document, output, version, {MaskOf(sdbs), MaskOf(ubis)});
  } else {
    if (sdbs.size() != 1) throw CLI::ValidationError("--satellites", "needs a single --sdb");
    const auto count = document.sdbs[sdbs[0]].database->satellites.size();
    const auto chosen = ParseList(state, options.satellites, count, "satellite");
    saved = SaveSatellites(state.context, document, sdbs[0], chosen, output, version);
  }
  ExpectSaved(state, options.output, saved);
}

void AddSave(CLI::App& program, CommandState& state) {
  const auto options = std::make_shared<SaveOptions>();
  CLI::App& save = *program.add_subcommand("save", "Open a database and save it");
  save.add_option("FILE", options->file, "Database file")->required();
  save.add_option("-o,--output", options->output, "Database file to write")->required();
  save.add_option("--sdb", options->sdbs, "SDBs to save: 1,3-5 or all")->check(CheckList);
  save.add_option("--ubi", options->ubis, "User box records to save: 1,3-5, all or none")
      ->check(CheckListOrNone);
  save.add_option("--satellites", options->satellites,
                  "Only these satellites of the single --sdb, as a subset stream")
      ->check(CheckList);
  save.add_option("--compress-bin", options->compress_bin, "Compress the payload (default: as read)")
      ->check(OneOf({"on", "off"}));
  save.add_option("--compress-sdb", options->compress_sdb,
                  "Compress each SDB and the user box records (default: as read)")
      ->check(OneOf({"on", "off"}));
  save.add_option("--version", options->version, "Database version MAJOR.MINOR")
      ->check(
          [](const std::string& text) { return ParseVersion(text) ? std::string() : VersionRefusal(text); });
  save.add_option("--initials", options->initials, "User's initials, up to three characters")
      ->check([](const std::string& text) {
        if (!FitsLatin(text)) return CharactersText(text);
        return LatinFromUtf8(text).size() <= 3 ? std::string()
                                               : "\"" + text + "\" has more than three characters";
      });
  save.callback([&state, options] { Save(state, *options); });
}

}  // namespace

void AddDatabaseCommands(CLI::App& program, CommandState& state) {
  CLI::App& info = *program.add_subcommand("info", "Print what the \"Bin file information\" box shows");
  const auto file = std::make_shared<std::string>();
  info.add_option("FILE", *file, "Database file")->required();
  const auto json = std::make_shared<bool>(false);
  info.add_flag("--json", *json, "The same as one JSON document");
  info.callback([&state, file, json] { Info(state, *file, *json); });
  AddCheckCommand(program, state);
  AddSave(program, state);
  AddSortCommand(program, state);
  AddExportCommand(program, state);
  AddDiffCommand(program, state);
  AddSetCommand(program, state);
}

}  // namespace vexa
