#include "tests/support/list_maker.h"

#include <gtest/gtest.h>

namespace vexa {

namespace {

void Place(std::string& text, size_t offset, const std::string& value, size_t width) {
  EXPECT_LE(value.size(), width) << value;
  text.replace(offset, value.size(), value);
}

void PlaceBig(std::string& text, size_t offset, uint16_t value) {
  text[offset] = static_cast<char>(value >> 8);
  text[offset + 1] = static_cast<char>(value & 0xFF);
}

}  // namespace

std::string SdxText(const SdxRecord& record) {
  std::string text(128, '_');
  Place(text, 0, "SATCODX", 7);
  Place(text, 8, record.version, 2);
  Place(text, 10, record.satellite, 18);
  Place(text, 28, record.type, 1);
  Place(text, 33, record.frequency, 6);
  Place(text, 42, record.polarization, 1);
  Place(text, 43, record.name, 8);
  Place(text, 51, record.position, 4);
  Place(text, 69, record.symbol_rate, 5);
  Place(text, 74, record.fec, 1);
  Place(text, 75, record.video, 4);
  Place(text, 79, record.audio, 4);
  Place(text, 83, record.pcr, 4);
  Place(text, 87, record.id, 5);
  Place(text, 111, record.access, 4);
  Place(text, 115, record.rest, 12);
  return text;
}

std::string SdxList(const std::vector<SdxRecord>& records, bool line_ends) {
  std::string list;
  for (const SdxRecord& record : records) list += SdxText(record) + (line_ends ? "\n" : "");
  // The record length is judged by the byte behind the first record, which a list of one does not have.
  if (records.size() == 1 && !line_ends) list += "S";
  return list;
}

std::string TelevisionList() {
  std::string list;
  for (const char* name : {"Das Erst", "ZDF_____"}) {
    std::string record = SdxText({.version = "05", .name = name, .id = list.empty() ? "00001" : "00002"});
    record[7] = '1';
    record.resize(132, '_');
    if (list.empty()) record.replace(115, 4, "e HD");
    list += record + "\r\n";
  }
  return list;
}

std::string DvbText(const DvbRecord& record) {
  std::string text(64, '\0');
  PlaceBig(text, 4, record.id);
  PlaceBig(text, 8, record.frequency);
  PlaceBig(text, 10, record.symbol_rate);
  text[12] = static_cast<char>(record.fec);
  text[14] = static_cast<char>(record.polarization);
  PlaceBig(text, 16, record.video);
  PlaceBig(text, 18, record.audio);
  PlaceBig(text, 20, record.pcr);
  text[27] = static_cast<char>(record.type);
  Place(text, 32, record.text, 32);
  return text;
}

std::string DvbList(const std::vector<DvbRecord>& records) {
  std::string list;
  for (const DvbRecord& record : records) list += DvbText(record);
  return list;
}

std::vector<uint32_t> Ids(const WorkRecords& work) {
  std::vector<uint32_t> ids;
  for (const WorkService& service : work.services) ids.push_back(service.program_number);
  return ids;
}

}  // namespace vexa
