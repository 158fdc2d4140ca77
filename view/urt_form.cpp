#include "view/urt_form.h"

#include <algorithm>

#include "config/software_version.h"
#include "platform/text.h"
#include "view/target_file.h"

namespace vexa {

namespace {

std::optional<Refusal> CheckRow(const UrtForm& form, size_t place) {
  const UrtRow& row = form.rows[place];
  const auto refuse = [place](const char* text, int field) {
    return Refusal{text, Icon::kStop, field, place};
  };
  std::error_code error;
  if (row.image.empty()) return refuse("Choose an image file.", UrtField::kImage);
  if (!std::filesystem::is_regular_file(row.image, error)) {
    return refuse("The image file does not exist.", UrtField::kImage);
  }
  if (row.urt.empty()) return refuse("Give the URT file a name.", UrtField::kUrt);
  for (const UrtRow& other : form.rows) {
    if (NameOneFile(other.image, row.urt))
      return refuse("The URT file would take the place of an image.", UrtField::kUrt);
  }
  if (row.region < 0 || static_cast<size_t>(row.region) >= form.regions.size()) {
    return refuse("Choose an image type.", UrtField::kRegion);
  }
  if (LatinFromUtf8(row.name).size() > kLongestImageName) {
    return refuse("An image name has at most 49 characters.", UrtField::kName);
  }
  if (!FitsLatin(row.name)) {
    return refuse("The image name has characters that no URT file holds.", UrtField::kName);
  }
  for (size_t i = 0; i < place; ++i) {
    if (NameOneFile(form.rows[i].urt, row.urt)) {
      return refuse("Two images would be written to the same URT file.", UrtField::kUrt);
    }
  }
  return std::nullopt;
}

bool TellResult(const Context& context, const ConversionResult& result, const UrtRow& row) {
  switch (result) {
    case ConversionResult::kDone:
      return true;
    case ConversionResult::kCannotOpen:
      TellWhy(context.messages, Icon::kStop, result.detail, "Error No: -3 \n File Access Error!!!");
      break;
    case ConversionResult::kRefused:
      break;  // told where it was found
    case ConversionResult::kReadFailed:
      TellWhy(context.messages, Icon::kStop, result.detail, "Could not read file \"%s\".",
              Utf8FromPath(row.image).c_str());
      break;
    case ConversionResult::kWriteFailed:
      TellWhy(context.messages, Icon::kStop, result.detail, "Could not write file \"%s\".",
              Utf8FromPath(row.urt).c_str());
      break;
  }
  return false;
}

// The image's own name with "urt" behind the last dot, in `folder`.
Path UrtPathIn(const Path& folder, const Path& image) {
  return folder / image.filename().replace_extension("urt");
}

// How an image for that region is described: a region of type 3 takes the application database, which is
// image type 0 of kind 4; any other gives its own type, static databases being of kind 3.
ImageDescription DescribeForRegion(const ProjectConfig& config, size_t place) {
  const RegionEntry& region = config.regions[place];
  ImageDescription description = DescribeImage(config);
  const bool application = region.type == 3;
  description.type = application ? 0 : region.type & 15;
  description.kind = application ? 4 : region.type == 4 ? 3 : region.type & 15;
  // Static databases have no fixed address in the receiver, as when they are uploaded.
  description.flag = region.type == 4 || config.configuration_index != 0;
  description.name = region.name;
  description.start = region.start;
  description.end = region.end;
  return description;
}

}  // namespace

UrtForm OpenUrtForm(const ProjectConfig& config) {
  UrtForm form;
  for (size_t i = 0; i < config.regions.size(); ++i) {
    form.regions.push_back(Utf8FromLatin(config.regions[i].name));
    const ImageDescription description = DescribeForRegion(config, i);
    form.compressible.push_back(MayBeCompressed(description.type, description.flag));
  }
  form.software_major = std::to_string(config.software_major);
  form.software_minor = std::to_string(config.software_minor);
  form.compressed = config.compressed_image;
  form.compression_type = config.compression_type == 1 ? 1 : 0;
  form.compression_level = std::min<int>(config.compression_level, 8);
  return form;
}

UrtRow MakeUrtRow(const ProjectConfig& config, const Path& image) {
  UrtRow row;
  ChooseUrtImage(row, image);
  if (config.regions.empty()) return row;
  const size_t region = config.image_type_index < config.regions.size() ? config.image_type_index : 0;
  row.region = static_cast<int>(region);
  row.name = Utf8FromLatin(config.regions[region].name);
  return row;
}

void ChooseUrtImage(UrtRow& row, const Path& image) {
  const auto proposed = [](const Path& path) {
    return path.empty() ? Path() : UrtPathIn(path.parent_path(), path);
  };
  if (row.urt == proposed(row.image)) row.urt = proposed(image);
  row.image = image;
}

void ChooseUrtRegion(const UrtForm& form, UrtRow& row, int region) {
  const auto name_of = [&form](int place) {
    return place >= 0 && static_cast<size_t>(place) < form.regions.size()
               ? form.regions[static_cast<size_t>(place)]
               : std::string();
  };
  if (row.name == name_of(row.region)) row.name = name_of(region);
  row.region = region;
}

CompressionChoices ChoicesOfCompression(const UrtForm& form) {
  const auto may = [&form](const UrtRow& row) {
    const auto region = static_cast<size_t>(row.region);
    return region >= form.compressible.size() || form.compressible[region];
  };
  CompressionChoices choices;
  choices.compressed = form.rows.empty() || std::any_of(form.rows.begin(), form.rows.end(), may);
  choices.method = choices.compressed && form.compressed;
  choices.level = choices.method && form.compression_type == 0;
  return choices;
}

std::optional<Refusal> CheckUrtForm(UrtForm& form) {
  for (UrtRow& row : form.rows) row.urt = BesideInput(row.image, row.urt);
  if (form.rows.empty()) return Refusal{"Add at least one image.", Icon::kStop, UrtField::kImage, 0};
  for (size_t i = 0; i < form.rows.size(); ++i) {
    if (const auto refusal = CheckRow(form, i)) return refusal;
  }
  SoftwareVersion version;
  const auto refusal = ReadSoftwareVersion(form.software_major, form.software_minor, version);
  if (!refusal) return std::nullopt;
  return Refusal{refusal->text, Icon::kStop,
                 refusal->field == kSoftwareMajorField ? UrtField::kMajor : UrtField::kMinor, 0};
}

std::optional<size_t> KeptUrt(const Messages& messages, UrtForm& form) {
  for (size_t i = 0; i < form.rows.size(); ++i) {
    if (!MayReplace(messages, form.rows[i].urt, form.rows[i].agreed)) return i;
  }
  for (UrtRow& row : form.rows) row.agreed = row.urt;
  return std::nullopt;
}

size_t ConvertRows(const Context& context, const ProjectConfig& config, const UrtForm& form,
                   const LocalTime& time) {
  ConversionParameters parameters = SetConversionParameters(config, time);
  parameters.compressed = form.compressed;
  parameters.compression_type = static_cast<uint8_t>(form.compression_type);
  parameters.level = form.compression_level + 1;
  SoftwareVersion version;
  ReadSoftwareVersion(form.software_major, form.software_minor, version);
  if (context.progress.range) context.progress.range(form.rows.size());
  for (size_t i = 0; i < form.rows.size(); ++i) {
    if (context.progress.position) context.progress.position(i);
    const UrtRow& row = form.rows[i];
    ImageDescription description = DescribeForRegion(config, static_cast<size_t>(row.region));
    description.name = LatinFromUtf8(row.name);
    description.software_major = version.major;
    description.software_minor = version.minor;
    if (!TellResult(context, ConvertToUrt(context, parameters, description, row.image, row.urt), row))
      return i;
  }
  if (context.progress.position) context.progress.position(form.rows.size());
  return form.rows.size();
}

}  // namespace vexa
