// Makes the files that a transfer sends, and names the files that it brings, in the temporary folder.
#pragma once

#include <optional>
#include <vector>

#include "config/project_config.h"
#include "core/bin_file.h"
#include "core/database.h"
#include "image/adb.h"
#include "platform/clock.h"

namespace vexa {

inline constexpr const char* kSdbUrtFile = "TempURTFile.eut";

// The ADB image of one SDB, and the second file of configuration index 1. `held` as for BuildAdbImages.
// Nothing after a message.
std::optional<std::vector<Path>> PrepareAdbUpload(const Context& context, const Document& document,
                                                  size_t sdb, const ProjectConfig& config,
                                                  const LocalTime& time, const HeldMemory* held = nullptr);
// The chosen SDBs and user box records, in the format that `config.sdb_format` says (0: the bare stream of
// the first SDB), for the region SdbRegion; with the window's version and initials, unused places filled from
// the context's defaults. Nothing after a message.
std::optional<std::vector<Path>> PrepareSdbUpload(const Context& context, const Document& document,
                                                  const BinSelection& selection, const ProjectConfig& config,
                                                  const LocalTime& time, const BinVersion& version = {});
// Where SDB data goes, as a place in `config.regions`: the image type that the user chose
// (`config.image_type_chosen`), else the first region of type 4, else the first.
size_t SdbRegion(const ProjectConfig& config);
// "SDB data would replace the image in ...": the question when SdbRegion is of type 3, which holds the image;
// else empty.
std::string ReplacedImageText(const ProjectConfig& config);
// Asks that question, No being the default. True: go on. For a window, before it prepares an SDB upload.
bool MayReplaceImage(const Context& context, const ProjectConfig& config);
// A BIN file chosen by the user, converted in the same way.
std::optional<std::vector<Path>> PrepareBinUpload(const Context& context, const Path& bin,
                                                  const ProjectConfig& config, const LocalTime& time);

// What a face asks before it prepares anything. False after a message.
bool MayUploadAdb(const Context& context, const ProjectConfig& config, const Document& document);
// `boxes`: the user started from the user box records.
bool MayUploadSdb(const Context& context, const ProjectConfig& config, const Document& document, bool boxes);
// A configuration is chosen, and it has regions and partitions.
bool MayDownload(const Context& context, const ProjectConfig& config);

struct DownloadFiles {
  std::vector<Path> script;   // to send
  std::vector<Path> regions;  // where the data of region 1 and 2 goes
};
// Writes the request script, and names the files for the data, which are not there yet. Nothing after a
// message.
std::optional<DownloadFiles> PrepareDownload(const Context& context, const ProjectConfig& config);

}  // namespace vexa
