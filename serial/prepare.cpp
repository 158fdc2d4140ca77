#include "serial/prepare.h"

#include <algorithm>
#include <bit>

#include "core/field_texts.h"
#include "image/adb.h"
#include "image/transfer_files.h"
#include "image/urt.h"
#include "platform/text.h"

namespace vexa {

namespace {

constexpr const char* kSelectForUpload = "Please select upload configuration.";

constexpr uint16_t kSdbType = 4, kSdbKind = 3;
constexpr uint8_t kImageType = 3;
constexpr uint32_t kDefaultEnd = 131136;  // the largest BIN file and the image header

bool IsConfigured(const Context& context, const ProjectConfig& config) {
  return (config.loader.block_kib != 0 && config.loader.packet_size != 0) ||
         RefuseSettings(context, config, "Its loader has no block size or no packet size.");
}

bool HasTables(const Context& context, const ProjectConfig& config) {
  return (!config.regions.empty() && config.partitions_loaded) ||
         RefuseSettings(context, config, "It has no regions or no partitions.");
}

// False after a message: `text` of a job that needs a configuration, and the file has none.
bool IsSelected(const Context& context, const ProjectConfig& config, const char* text) {
  if (config.configuration_found) return true;
  TellWhy(
      context.messages, Icon::kStop,
      ConfigurationName(config) + " is not in the configuration file. Choose another one in the settings.",
      "%s", text);
  return false;
}

bool RefuseSdbs(const Context& context, const char* why) {
  TellWhy(context.messages, Icon::kStop, why, "Add atleast one SDB to upload.");
  return false;
}

bool HasSdb(const Context& context, const Document& document) {
  return !document.sdbs.empty() || RefuseSdbs(context, "The database has none.");
}

ImageDescription DescribeSdb(const ProjectConfig& config) {
  ImageDescription description = DescribeImage(config);
  description.type = kSdbType;
  description.kind = kSdbKind;
  description.flag = 1;
  description.name = "SDB Data";
  description.start = 0;
  description.end = kDefaultEnd;
  const size_t place = SdbRegion(config);
  if (place < config.regions.size()) {
    const RegionEntry& region = config.regions[place];
    description.name = region.name;
    description.start = region.start;
    description.end = region.end;
  }
  return description;
}

std::optional<std::vector<Path>> Convert(const Context& context, const Path& image,
                                         const ProjectConfig& config, const LocalTime& time) {
  const Path urt = context.temporary_folder / kSdbUrtFile;
  const ConversionParameters parameters = SetConversionParameters(config, time);
  const auto result = ConvertToUrt(context, parameters, DescribeSdb(config), image, urt);
  if (result == ConversionResult::kDone) return std::vector<Path>{urt};
  if (result != ConversionResult::kRefused)
    TellWhy(context.messages, Icon::kStop, result.detail, "Error No: -3 \n File Access Error!!!");
  return std::nullopt;
}

bool WriteSingle(const Context& context, const Document& document, size_t sdb, const BinVersion& version,
                 const Path& path) {
  const StaticDatabase& database = *document.sdbs[sdb].database;
  if (database.lnb_count == 0 || database.satellites.empty()) {
    TellWhy(context.messages, Icon::kStop, NameText(document, document.sdbs[sdb].name),
            "Add atleast one LNB and Satellite to save as a bin");
    return false;
  }
  const Bytes stream = WriteSdbStream(database, version, DefaultsOf(context));
  const WriteResult written = WriteWholeFile(path, stream, *context.files);
  if (written == WriteResult::kDone) return true;
  TellWhy(context.messages, Icon::kStop, WriteReason(path, written.error),
          "Error No: -3 \n File Access Error!!!");
  return false;
}

// What is wrong with the scratch file is wrong with the database, whose name the user knows.
Context OfDatabase(const Context& context, const Document& document, const Path& scratch) {
  Context about = context;
  about.messages.tell = [name = Utf8FromPath(scratch) + ": ", source = document.source,
                         tell = context.messages.tell](Message message) {
    if (message.detail.starts_with(name))
      message.detail.replace(0, name.size(), source.empty() ? "" : source + ": ");
    tell(message);
  };
  return about;
}

// The container, when a receiver takes it.
bool WriteMultiple(const Context& context, const Document& document, const BinSelection& selection,
                   const BinVersion& version, const Path& path) {
  const auto size = SaveBin(context, document, path, version, selection);
  return size && CheckBinSize(OfDatabase(context, document, path), path, *size);
}

uint32_t MaskOfCount(size_t count) {
  return count >= 32 ? ~0u : (1u << count) - 1;
}

}  // namespace

bool MayUploadAdb(const Context& context, const ProjectConfig& config, const Document& document) {
  return IsSelected(context, config, kSelectForUpload) && HasTables(context, config) &&
         IsConfigured(context, config) && HasSdb(context, document);
}

bool MayUploadSdb(const Context& context, const ProjectConfig& config, const Document& document, bool boxes) {
  if (!IsSelected(context, config, kSelectForUpload) || !IsConfigured(context, config)) return false;
  if (boxes && document.ubis.empty()) {
    TellWhy(context.messages, Icon::kStop, "The database has none.",
            "Add atleast one User box info to upload.");
    return false;
  }
  return HasSdb(context, document);
}

bool MayDownload(const Context& context, const ProjectConfig& config) {
  return IsSelected(context, config, "Please select download configuration.") && HasTables(context, config);
}

std::optional<std::vector<Path>> PrepareAdbUpload(const Context& context, const Document& document,
                                                  size_t sdb, const ProjectConfig& config,
                                                  const LocalTime& time, const HeldMemory* held) {
  RemoveTransferFiles(context.temporary_folder);
  int count = 0;
  if (!CreateAdbPartitionFiles(context, document, sdb, config, time, count, held) || count == 0)
    return std::nullopt;
  std::vector<Path> files = {context.temporary_folder / kAdbUrtFile};
  if (count == 2) files.push_back(context.temporary_folder / kE2pUrtFile);
  return files;
}

std::optional<std::vector<Path>> PrepareSdbUpload(const Context& context, const Document& document,
                                                  const BinSelection& selection, const ProjectConfig& config,
                                                  const LocalTime& time, const BinVersion& version) {
  const uint32_t sdbs = selection.sdbs & MaskOfCount(document.sdbs.size());
  if (!IsConfigured(context, config)) return std::nullopt;
  if (sdbs == 0) return RefuseSdbs(context, "None was chosen."), std::nullopt;
  RemoveTransferFiles(context.temporary_folder);
  const Path image = context.temporary_folder / kDecodedFile;
  const bool single = config.sdb_format == 0;
  const bool written =
      single ? WriteSingle(context, document, static_cast<size_t>(std::countr_zero(sdbs)), version, image)
             : WriteMultiple(context, document, selection, version, image);
  auto files = written ? Convert(OfDatabase(context, document, image), image, config, time) : std::nullopt;
  std::error_code ignored;
  std::filesystem::remove(image, ignored);
  return files;
}

size_t SdbRegion(const ProjectConfig& config) {
  const auto& regions = config.regions;
  if (config.image_type_chosen && config.image_type_index < regions.size()) return config.image_type_index;
  const auto of_sdbs = [](const RegionEntry& region) { return region.type == kSdbType; };
  const auto found = std::find_if(regions.begin(), regions.end(), of_sdbs);
  return found == regions.end() ? 0 : static_cast<size_t>(found - regions.begin());
}

std::string ReplacedImageText(const ProjectConfig& config) {
  const size_t place = SdbRegion(config);
  if (place >= config.regions.size() || config.regions[place].type != kImageType) return "";
  return Format("SDB data would replace the image in \"%s\".\nDo you want to continue ?",
                Utf8FromLatin(config.regions[place].name).c_str());
}

bool MayReplaceImage(const Context& context, const ProjectConfig& config) {
  const std::string question = ReplacedImageText(config);
  return question.empty() ||
         (context.messages.ask && context.messages.ask(question, kApplicationTitle, false));
}

std::optional<std::vector<Path>> PrepareBinUpload(const Context& context, const Path& bin,
                                                  const ProjectConfig& config, const LocalTime& time) {
  if (!IsConfigured(context, config)) return std::nullopt;
  return Convert(context, bin, config, time);
}

std::optional<DownloadFiles> PrepareDownload(const Context& context, const ProjectConfig& config) {
  RemoveTransferFiles(context.temporary_folder);
  if (!WriteDownloadRequest(context, config)) return std::nullopt;
  const Path& folder = context.temporary_folder;
  return DownloadFiles{{folder / kRequestFile}, {folder / kAdbImageFile, folder / kE2pImageFile}};
}

}  // namespace vexa
