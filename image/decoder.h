// Turns what was downloaded from the receiver back into a database file.
//
// The receiver keeps its settings as a journal: each save appends a copy and clears one more high bit of the
// 64-bit marker in front (two words, high half first, 0x7FFFFFFF 0xFFFFFFFF with one copy). The current copy
// is the last.
#pragma once

#include <optional>
#include <span>

#include "config/project_config.h"
#include "core/context.h"
#include "core/database.h"
#include "image/receiver_layout.h"

namespace vexa {

struct DecodedImage {
  Bytes file;              // a bare SDB stream of version 6 with a user box record behind it
  SettingsBlock settings;  // those of the database in `file`
  SelectionBlock selection;
};

// Which copy a marker names: leading zero bits less one. 0 for a marker with its top bit set, for one with no
// bit above the lowest, and for 35 and more, which a partition does not hold.
size_t JournalSlot(uint64_t marker);

// `adb` is the content of the region from its start on, `e2p` that of the second region, looked at for
// configuration index 1 only; `user_box` becomes the file's user box record. Nothing after a message: the
// file of what is given back can be opened. Favourite entries that name no service are left out, and a
// service order that does not name each service once becomes the services' own.
std::optional<DecodedImage> DecodeImage(const Context& context, const ProjectConfig& config,
                                        std::span<const uint8_t> adb, std::span<const uint8_t> e2p,
                                        const UserBoxInfo& user_box);
// The same from "~001adb.bin" and, for configuration index 1, "~001e2p.bin" in `folder`. Nothing after a
// message, also when one cannot be read.
std::optional<DecodedImage> DecodeFolder(const Context& context, const ProjectConfig& config,
                                         const Path& folder, const UserBoxInfo& user_box);
// From and to the temporary folder: leaves the file as "~001sdb.bin" there. Nothing after a message.
std::optional<DecodedImage> DecodeDownload(const Context& context, const ProjectConfig& config,
                                           const UserBoxInfo& user_box);
// Opens the decoded file into an empty document, which takes the settings. False after a message.
bool OpenDecoded(const Context& context, const DecodedImage& decoded, Document& document);

}  // namespace vexa
