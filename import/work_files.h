// Import work files: what a list reader found, one fixed-size record a satellite, carrier and service,
// little-endian, without header, in the order of the list. Carriers of one satellite and services of one
// carrier are contiguous.
//
//   WorkSatellite  28 bytes  "~001sat.bin"
//   WorkCarrier    36 bytes  "~001car.bin"
//   WorkService    32 bytes  "~001ser.bin"
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "core/context.h"
#include "core/database.h"

namespace vexa {

struct WorkSatellite {
  uint32_t first_carrier : 16;
  uint32_t carrier_count : 16;

  uint32_t unused_0 : 8;
  uint32_t read : 1;             // set by every reader
  uint32_t chosen : 1;           // import wizard
  uint32_t carrier_options : 5;  // import wizard: all, C band, Ku band, vertical, horizontal
  uint32_t unused_15 : 1;
  uint32_t east : 1;
  uint32_t angle : 12;  // tenths of a degree
  uint32_t unused_29 : 3;

  char name[kNameSize];
};
static_assert(sizeof(WorkSatellite) == 28);

struct WorkCarrier {
  uint32_t symbol_rate : 24;
  uint32_t unused_24 : 8;

  uint32_t first_service : 16;
  uint32_t service_count : 16;

  uint32_t satellite_index : 10;
  uint32_t polarization : 2;
  uint32_t unused_12 : 2;
  uint32_t fec : 3;
  uint32_t read : 1;
  uint32_t chosen : 1;
  uint32_t service_options : 5;  // all, FTA, scrambled, TV, radio
  uint32_t unused_24b : 8;

  char name[kNameSize];
  uint32_t frequency;
};
static_assert(sizeof(WorkCarrier) == 36);

struct WorkService {
  uint32_t carrier_index : 16;
  uint32_t video_pid : 14;
  uint32_t read : 1;
  uint32_t unused_31 : 1;

  uint32_t program_number : 16;
  uint32_t unused_16 : 6;
  uint32_t chosen : 1;
  uint32_t unused_23 : 9;

  char name[kNameSize];

  uint32_t audio_pid : 14;
  uint32_t pcr_pid : 14;
  uint32_t free : 1;
  uint32_t read_service : 1;
  uint32_t type : 2;
};
static_assert(sizeof(WorkService) == 32);

// What one import has found so far, in memory; files are made of it only where they are asked for.
struct WorkRecords {
  std::vector<WorkSatellite> satellites;
  std::vector<WorkCarrier> carriers;
  std::vector<WorkService> services;
};

// The record that a reader starts from: marked as read, the defaults' fields, all other bits and the name 0.
WorkSatellite NewWorkSatellite(const DefaultRecords& defaults);
WorkCarrier NewWorkCarrier(const DefaultRecords& defaults);
WorkService NewWorkService(const DefaultRecords& defaults);

// Where the three files stand in `folder`, satellites first; and with what they hold.
std::array<Path, 3> WorkFilePaths(const Path& folder);
std::array<FileContent, 3> WorkFileContents(const WorkRecords& work, const Path& folder);

}  // namespace vexa
