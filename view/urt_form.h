// The dialogs that turn images into URT files, without their windows: what the fields hold, what OK refuses,
// and the conversion of one or several images in one go. Texts are UTF-8.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "image/urt.h"
#include "view/refusal.h"

namespace vexa {

// One image to convert.
struct UrtRow {
  Path image, urt;
  int region = -1;   // of the configuration; -1: none
  std::string name;  // as the URT file carries it
  Path agreed;       // a URT file that the user has agreed to replace
};

struct UrtForm {
  std::vector<std::string> regions;  // the "Image Type" list
  std::vector<bool> compressible;    // whether an image for that region may be compressed
  std::vector<UrtRow> rows;          // the single form has exactly one
  std::string software_major, software_minor;
  bool compressed = false;
  int compression_type = 0, compression_level = 0;  // places in kCompressionTypes and kCompressionLevels
};

struct UrtField {
  enum : int { kNone, kImage, kUrt, kRegion, kName, kMajor, kMinor };
};

inline constexpr size_t kMostUrtRows = 255;  // of one go

// With the configuration's versions and compression, and no row.
UrtForm OpenUrtForm(const ProjectConfig& config);
// A row for the image: the configuration's image type and that region's name, the URT file beside the image.
UrtRow MakeUrtRow(const ProjectConfig& config, const Path& image);
// Another image brings its URT file's name along, unless the user gave that one of its own.
void ChooseUrtImage(UrtRow& row, const Path& image);
// Another region brings its name along, unless the user gave the row a name of its own.
void ChooseUrtRegion(const UrtForm& form, UrtRow& row, int region);
struct CompressionChoices {
  bool compressed = false, method = false, level = false;
};
// Which of the compression's fields take an answer. The check box: some row's image may be compressed, or
// there is no row yet; images that may not go as they are beside those that may.
CompressionChoices ChoicesOfCompression(const UrtForm& form);
// Nothing when all may be converted. URT files that were named without a folder are put beside their images.
std::optional<Refusal> CheckUrtForm(UrtForm& form);

// Asks for each URT file of a checked dialog that is there already whether it may be replaced. Nothing when
// all may be written, which is remembered in the rows; else the row of the first No.
std::optional<size_t> KeptUrt(const Messages& messages, UrtForm& form);

// Converts the rows of a checked dialog in order, one step of progress each. Each URT file appears whole or
// not at all; a failure (message shown) ends it, files before it stay. The number of files made.
size_t ConvertRows(const Context& context, const ProjectConfig& config, const UrtForm& form,
                   const LocalTime& time);

}  // namespace vexa
