// The receiver's application database: the open database laid out as it stands in the receiver's memory.
//
// ADB image, end - start bytes of its region, little-endian, 0xFF where nothing stands; s3 to s6 are the
// partition sizes
//   0             16 x 8     LNBs
//   128           85 x 28    satellites
//   s3            n x 44     services, carrier by carrier
//   s3+s4-36n     n x 36     carriers, carrier 0 last
//   s3+s4         n x 2      service order
//   s3+s4+s5      8 x 7044   favourite groups: header of 44, 2500 TV entries, 1000 radio entries
//   s3+s4+s5+s6   8 + 96     marker and settings block  (in the E2P image: the block at 0)
//   ... + size[0] 8 + 64     marker and favourite-selection block  (in the E2P image: the block at size[0])
// Entries: receiver_layout.h. A marker counts the copies behind it: decoder.h.
//
// Download request, big-endian: "MZ", record count (4), then for each record a frame (line_frame.h) of 16
// bytes: record count (4), region number from 1, start (4), end (4), 0 (3).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "config/project_config.h"
#include "core/context.h"
#include "core/database.h"
#include "platform/clock.h"

namespace vexa {

inline constexpr uint32_t kE2pRequested = 160;  // bytes of the second region that a download asks for

struct AdbImages {
  Bytes adb;
  Bytes e2p;  // configuration index 1 only
};

// What a receiver held, and by which configuration it was read.
struct HeldMemory {
  ProjectConfig config;
  AdbImages regions;  // the second as far as it was read
};

// Lays the SDB at place `sdb` (from 0, must be there) of the document out, with the document's first user box
// record and settings block; the document stays as it is. `held`, which may be nullptr, is what the document
// was decoded from: where `config` lays memory out as it was read, the images are its bytes, all but the
// image header. Nothing after a message: the configuration has no region or partition, a limit is exceeded,
// or a table does not fit.
std::optional<AdbImages> BuildAdbImages(const Context& context, const Document& document, size_t sdb,
                                        const ProjectConfig& config, const HeldMemory* held = nullptr);

// Bytes of the image header that the receiver writes over the end of the region.
uint32_t AdbHeaderSize(const ProjectConfig& config);

// How full a table of the receiver is.
struct TableUse {
  std::string
      table;  // "lnbs", "satellites", "carriers", "services", "tables", "tv-group-1", "radio-group-1", ...
  uint64_t used = 0, room = 0;  // records; of "tables", what carriers and services share, bytes
};
// Of each table; nothing for a configuration without regions or partitions. A database of which something is
// above its room is refused by BuildAdbImages.
std::vector<TableUse> AdbRooms(const StaticDatabase& database, const ProjectConfig& config);

// Builds the images, writes them and their URT files into the temporary folder, under the names of
// transfer_files.h. `time` is what the URT files carry. `files` is how many URT files are ready to be sent:
// 0, 1, or 2 for configuration index 1. `held` as above. False after a message.
bool CreateAdbPartitionFiles(const Context& context, const Document& document, size_t sdb,
                             const ProjectConfig& config, const LocalTime& time, int& files,
                             const HeldMemory* held = nullptr);

// The request that makes the loader send its memory. Nothing after a message.
std::optional<Bytes> BuildDownloadRequest(const Context& context, const ProjectConfig& config);
// Writes it as "~001dcl.urt" into the temporary folder. False after a message.
bool WriteDownloadRequest(const Context& context, const ProjectConfig& config);

}  // namespace vexa
