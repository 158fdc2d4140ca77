// Where every bit of every record stands.

#include "core/records.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <vector>

namespace vexa {
namespace {

using Values = std::vector<int64_t>;

template <class T, size_t N>
int64_t Any(const T (&field)[N]) {
  return std::any_of(field, field + N, [](T c) { return c != 0; });
}

// Sets each bit of an empty record alone: just the field must be set that the widths, from the first bit on,
// say to hold it. `values` gives all fields in the order of the widths.
template <class Record>
void ExpectLayout(const std::vector<size_t>& widths, Values (*values)(const Record&)) {
  ASSERT_EQ(std::accumulate(widths.begin(), widths.end(), size_t{0}), 8 * sizeof(Record));
  size_t bit = 0;
  for (size_t field = 0; field < widths.size(); ++field) {
    for (const size_t end = bit + widths[field]; bit < end; ++bit) {
      uint8_t bytes[sizeof(Record)] = {};
      bytes[bit / 8] = static_cast<uint8_t>(1 << bit % 8);
      Record record;
      std::memcpy(&record, bytes, sizeof record);
      Values found = values(record);
      ASSERT_EQ(found.size(), widths.size());
      EXPECT_NE(found[field], 0) << "bit " << bit;
      found[field] = 0;
      EXPECT_THAT(found, testing::Each(0)) << "bit " << bit;
    }
  }
}

TEST(Records, EveryFieldStandsInItsBits) {
  ExpectLayout<LnbRecord>({14, 14, 2, 1, 1, 2, 3, 5, 2, 3, 2, 2, 1, 12}, [](const LnbRecord& r) {
    return Values{r.frequency1,    r.frequency2,   r.type,
                  r.power,         r.kept_31,      r.cleared_0,
                  r.diseqc_switch, r.plain_switch, r.tone_burst_switch,
                  r.cleared_12,    r.tone_22khz,   r.switch_type,
                  r.motor,         r.kept_20};
  });
  ExpectLayout<SatelliteRecord>({16, 8, 8, 1, 1, 12, 18, 160}, [](const SatelliteRecord& r) {
    return Values{r.carrier_count, r.lnb_index, r.position, r.user, r.east, r.angle, r.kept_14, Any(r.name)};
  });
  ExpectLayout<CarrierRecord>({24, 8, 16, 16, 10, 2, 3, 1, 16, 160, 32}, [](const CarrierRecord& r) {
    return Values{r.symbol_rate,     r.lnb_index,    r.first_service, r.service_count,
                  r.satellite_index, r.polarization, r.fec,           r.user,
                  r.kept_16,         Any(r.name),    r.frequency};
  });
  ExpectLayout<ServiceRecord>({16, 16, 14, 14, 4, 14, 2, 1, 15, 160}, [](const ServiceRecord& r) {
    return Values{r.program_number, r.carrier_index, r.video_pid, r.audio_pid, r.kept_28,
                  r.pcr_pid,        r.type,          r.free,      r.kept_17,   Any(r.name)};
  });
  ExpectLayout<FavouriteRecord>({4, 12, 12, 4, 160, 160}, [](const FavouriteRecord& r) {
    return Values{r.kept_0, r.tv_count, r.radio_count, r.kept_28, Any(r.tv_name), Any(r.radio_name)};
  });
  ExpectLayout<UserBoxInfo>({8, 8, 8, 8, 8, 8, 16, 128, 32}, [](const UserBoxInfo& r) {
    return Values{r.menu_language, r.audio_language,  r.time_zone, r.flags,         r.rf_channel,
                  r.start_volume,  r.start_programme, Any(r.kept), Any(r.lock_code)};
  });
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
