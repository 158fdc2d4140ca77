// Where every bit of every record stands. Each field is set to ones in an empty record; exactly its bits
// must be set, and together the fields must cover the record.

#include "core/records.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>
#include <vector>

namespace vexa {
namespace {

using Bits = std::vector<bool>;

template <class Record>
Bits BitsOf(const Record& record) {
  unsigned char bytes[sizeof record];
  std::memcpy(bytes, &record, sizeof record);
  Bits bits;
  for (const unsigned char byte : bytes) {
    for (int bit = 0; bit < 8; ++bit) bits.push_back(byte >> bit & 1);
  }
  return bits;
}

struct FieldRow {
  const char* record;
  const char* field;
  size_t first, width;
  std::function<Bits()> ones;
};

#define FIELD(Record, word, bit, width, member)                   \
  FieldRow {                                                      \
#Record, #member, 32 * (word) + (bit), width, [] {              \
      Record record{};                                              \
      record.member = static_cast<decltype(record.member)>(~0u) &   \
                      static_cast<decltype(record.member)>((uint64_t{1} << (width)) - 1); \
      return BitsOf(record);                                        \
    } \
  }
#define FIELD_BYTES(Record, byte, count, member)            \
  FieldRow {                                                \
#Record, #member, 8 * (byte), 8 * (count), [] {           \
      Record record{};                                        \
      std::memset(&record.member, 0xFF, sizeof record.member); \
      return BitsOf(record);                                  \
    } \
  }

std::vector<FieldRow> LnbAndSatelliteFields() {
  return {
      FIELD(LnbRecord, 0, 0, 14, frequency1),
      FIELD(LnbRecord, 0, 14, 14, frequency2),
      FIELD(LnbRecord, 0, 28, 2, type),
      FIELD(LnbRecord, 0, 30, 1, power),
      FIELD(LnbRecord, 0, 31, 1, kept_31),
      FIELD(LnbRecord, 1, 0, 2, cleared_0),
      FIELD(LnbRecord, 1, 2, 3, diseqc_switch),
      FIELD(LnbRecord, 1, 5, 5, plain_switch),
      FIELD(LnbRecord, 1, 10, 2, tone_burst_switch),
      FIELD(LnbRecord, 1, 12, 3, cleared_12),
      FIELD(LnbRecord, 1, 15, 2, tone_22khz),
      FIELD(LnbRecord, 1, 17, 2, switch_type),
      FIELD(LnbRecord, 1, 19, 1, motor),
      FIELD(LnbRecord, 1, 20, 12, kept_20),
      FIELD(SatelliteRecord, 0, 0, 16, carrier_count),
      FIELD(SatelliteRecord, 0, 16, 8, lnb_index),
      FIELD(SatelliteRecord, 0, 24, 8, position),
      FIELD(SatelliteRecord, 1, 0, 1, user),
      FIELD(SatelliteRecord, 1, 1, 1, east),
      FIELD(SatelliteRecord, 1, 2, 12, angle),
      FIELD(SatelliteRecord, 1, 14, 18, kept_14),
      FIELD_BYTES(SatelliteRecord, 8, 20, name),
  };
}

std::vector<FieldRow> CarrierAndServiceFields() {
  return {
      FIELD(CarrierRecord, 0, 0, 24, symbol_rate),
      FIELD(CarrierRecord, 0, 24, 8, lnb_index),
      FIELD(CarrierRecord, 1, 0, 16, first_service),
      FIELD(CarrierRecord, 1, 16, 16, service_count),
      FIELD(CarrierRecord, 2, 0, 10, satellite_index),
      FIELD(CarrierRecord, 2, 10, 2, polarization),
      FIELD(CarrierRecord, 2, 12, 3, fec),
      FIELD(CarrierRecord, 2, 15, 1, user),
      FIELD(CarrierRecord, 2, 16, 16, kept_16),
      FIELD_BYTES(CarrierRecord, 12, 20, name),
      FIELD(CarrierRecord, 8, 0, 32, frequency),
      FIELD(ServiceRecord, 0, 0, 16, program_number),
      FIELD(ServiceRecord, 0, 16, 16, carrier_index),
      FIELD(ServiceRecord, 1, 0, 14, video_pid),
      FIELD(ServiceRecord, 1, 14, 14, audio_pid),
      FIELD(ServiceRecord, 1, 28, 4, kept_28),
      FIELD(ServiceRecord, 2, 0, 14, pcr_pid),
      FIELD(ServiceRecord, 2, 14, 2, type),
      FIELD(ServiceRecord, 2, 16, 1, free),
      FIELD(ServiceRecord, 2, 17, 15, kept_17),
      FIELD_BYTES(ServiceRecord, 12, 20, name),
  };
}

std::vector<FieldRow> FavouriteAndBoxFields() {
  return {
      FIELD(FavouriteRecord, 0, 0, 4, kept_0),         FIELD(FavouriteRecord, 0, 4, 12, tv_count),
      FIELD(FavouriteRecord, 0, 16, 12, radio_count),  FIELD(FavouriteRecord, 0, 28, 4, kept_28),
      FIELD_BYTES(FavouriteRecord, 4, 20, tv_name),    FIELD_BYTES(FavouriteRecord, 24, 20, radio_name),
      FIELD_BYTES(UserBoxInfo, 0, 1, menu_language),   FIELD_BYTES(UserBoxInfo, 1, 1, audio_language),
      FIELD_BYTES(UserBoxInfo, 2, 1, time_zone),       FIELD_BYTES(UserBoxInfo, 3, 1, flags),
      FIELD_BYTES(UserBoxInfo, 4, 1, rf_channel),      FIELD_BYTES(UserBoxInfo, 5, 1, start_volume),
      FIELD_BYTES(UserBoxInfo, 6, 2, start_programme), FIELD_BYTES(UserBoxInfo, 8, 16, kept),
      FIELD_BYTES(UserBoxInfo, 24, 4, lock_code),
  };
}

TEST(Records, EveryFieldStandsInItsBits) {
  std::map<std::string, Bits> covered;
  for (const auto& group : {LnbAndSatelliteFields(), CarrierAndServiceFields(), FavouriteAndBoxFields()}) {
    for (const FieldRow& row : group) {
      const Bits bits = row.ones();
      Bits& all = covered[row.record];
      all.resize(bits.size());
      for (size_t i = 0; i < bits.size(); ++i) {
        const bool within = i >= row.first && i < row.first + row.width;
        ASSERT_EQ(bits[i], within) << row.record << "." << row.field << " bit " << i;
        if (within) {
          ASSERT_FALSE(all[i]) << row.record << "." << row.field << " overlaps at bit " << i;
          all[i] = true;
        }
      }
    }
  }
  ASSERT_EQ(covered.size(), 6u);
  for (const auto& [record, bits] : covered)
    EXPECT_EQ(std::count(bits.begin(), bits.end(), false), 0) << record << " has bits without a field";
}

TEST(Records, NamesEndAtTheirNulOrTheirField) {
  char field[kNameSize];
  SetName(field, "1234567890123456789012345");
  EXPECT_EQ(NameOf(field), "1234567890123456789");
  EXPECT_EQ(field[19], 0);
  SetName(field, "AB");
  EXPECT_EQ(std::string(field, kNameSize), std::string("AB") + std::string(18, '\0'));
  std::memset(field, 'x', sizeof field);
  EXPECT_EQ(NameOf(field), std::string(20, 'x'));
  SetName(field, "");
  EXPECT_EQ(NameOf(field), "");
}

}  // namespace
}  // namespace vexa
