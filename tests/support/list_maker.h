// Hand-made channel lists for tests: records with named columns, and the bytes of work records.
#pragma once

#include <string>
#include <vector>

#include "import/work_files.h"

namespace vexa {

// One SatcoDX record; columns that are not named keep these values.
struct SdxRecord {
  std::string version = "03", satellite = "ASTRA 1", type = "T", frequency = "011778", polarization = "0";
  std::string name = "ARTE____", position = "0192", symbol_rate = "27500", fec = "3";
  std::string video = "0401", audio = "0402", pcr = "0401", id = "28724", access = "____",
              rest = "____________";
};

// The record's text, 128 characters; satellite stands at 10 (18 characters), filled with '_'.
std::string SdxText(const SdxRecord& record);
// Records of 128 characters, or of 129 with a line feed behind each.
std::string SdxList(const std::vector<SdxRecord>& records, bool line_ends = false);

// A list as a television writes it, of two records of version 105 with CR LF behind each: "Das Erste HD" and
// "ZDF", with ids 1 and 2, on one carrier.
std::string TelevisionList();

// One DVB2000 record.
struct DvbRecord {
  uint16_t id = 0, frequency = 0, symbol_rate = 0, video = 0, audio = 0, pcr = 0;
  uint8_t fec = 0, polarization = 0, type = 0;
  std::string text;
};
std::string DvbText(const DvbRecord& record);
std::string DvbList(const std::vector<DvbRecord>& records);

// The text of a name as a test compares it.
template <size_t N>
std::string Name(const char (&field)[N]) {
  return std::string(NameOf(field));
}

// Names of all records of one kind, joined by '|'.
template <class Record>
std::string Names(const std::vector<Record>& records) {
  std::string names;
  for (const Record& record : records) names += (names.empty() ? "" : "|") + Name(record.name);
  return names;
}

// Program numbers of all services.
std::vector<uint32_t> Ids(const WorkRecords& work);

// The bytes of a work file.
template <class Record>
Bytes BytesOfRecords(const std::vector<Record>& records) {
  const auto* start = reinterpret_cast<const uint8_t*>(records.data());
  return Bytes(start, start + records.size() * sizeof(Record));
}

}  // namespace vexa
