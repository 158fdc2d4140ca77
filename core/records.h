// The records of the channel database, exactly as they stand in files: little-endian 32-bit words of
// bit-fields, lowest bit first, and single-byte names (Windows-1252), NUL-padded.
//
// A record is read and written by copying its bytes. Fields named `kept...` carry bits that no dialog
// knows; they survive loading and saving unchanged.
//
//   LnbRecord        8 bytes     SatelliteRecord  28 bytes    CarrierRecord  36 bytes
//   ServiceRecord   32 bytes     FavouriteRecord  44 bytes    UserBoxInfo    28 bytes
//
// Frequencies MHz, symbol rates kS/s, angles tenths of a degree, PID 8192 = the service has none.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vexa {

inline constexpr uint32_t kMaximumLnbs = 16;
inline constexpr uint32_t kMaximumSatellites = 85;
inline constexpr uint32_t kMaximumCarriers = 65535;
inline constexpr uint32_t kMaximumServices = 65535;
inline constexpr uint32_t kFavouriteGroups = 8;
inline constexpr uint32_t kMaximumTvEntries = 2500;
inline constexpr uint32_t kMaximumRadioEntries = 1000;
inline constexpr uint32_t kNoPid = 8192;
inline constexpr uint32_t kNameSize = 20;
inline constexpr uint32_t kSdbNameLength = 6, kUbiNameLength = 7;  // characters that a file keeps

enum LnbType : uint32_t { kLnbNormal, kLnbLnbf, kLnbUniversal, kLnbIfInput };
enum SwitchType : uint32_t { kSwitchNone, kSwitchToneBurst, kSwitchDiseqc };
enum Polarization : uint32_t { kHorizontal, kVertical, kLeft, kRight };
enum ServiceType : uint32_t { kTv = 1, kRadio = 2 };

struct LnbRecord {
  uint32_t frequency1 : 14;  // local oscillator
  uint32_t frequency2 : 14;
  uint32_t type : 2;   // LnbType
  uint32_t power : 1;  // 1 on
  uint32_t kept_31 : 1;

  uint32_t cleared_0 : 2;          // 0 after the dialog stored the record
  uint32_t diseqc_switch : 3;      // 0 none, 1-4 A-D
  uint32_t plain_switch : 5;       // 0 none, 1-16
  uint32_t tone_burst_switch : 2;  // 0 none, 1 A, 2 B
  uint32_t cleared_12 : 3;         // 0 after the dialog stored the record
  uint32_t tone_22khz : 2;         // 0 off, 1 on, 2 auto
  uint32_t switch_type : 2;        // SwitchType: which of the three switch fields counts
  uint32_t motor : 1;              // 0 fixed, 1 motor
  uint32_t kept_20 : 12;
};
static_assert(sizeof(LnbRecord) == 8);

struct SatelliteRecord {
  uint32_t carrier_count : 16;
  uint32_t lnb_index : 8;  // 0..15
  uint32_t position : 8;   // receiver's position number

  uint32_t user : 1;  // 1: not a factory default
  uint32_t east : 1;
  uint32_t angle : 12;  // tenths of a degree
  uint32_t kept_14 : 18;

  char name[kNameSize];
};
static_assert(sizeof(SatelliteRecord) == 28);

struct CarrierRecord {
  uint32_t symbol_rate : 24;  // kS/s
  uint32_t lnb_index : 8;     // of its satellite; set when saved

  uint32_t first_service : 16;  // place in the service block; set when saved
  uint32_t service_count : 16;

  uint32_t satellite_index : 10;
  uint32_t polarization : 2;  // Polarization
  uint32_t fec : 3;           // 0 Auto, 1-5: 1/2 2/3 3/4 5/6 7/8
  uint32_t user : 1;
  uint32_t kept_16 : 16;

  char name[kNameSize];
  uint32_t frequency;  // MHz
};
static_assert(sizeof(CarrierRecord) == 36);

struct ServiceRecord {
  uint32_t program_number : 16;
  uint32_t carrier_index : 16;  // place in the carrier block; set when saved

  uint32_t video_pid : 14;
  uint32_t audio_pid : 14;
  uint32_t kept_28 : 4;

  uint32_t pcr_pid : 14;
  uint32_t type : 2;  // kTv; every other value is radio
  uint32_t free : 1;  // 0 scrambled
  uint32_t kept_17 : 15;

  char name[kNameSize];
};
static_assert(sizeof(ServiceRecord) == 32);

struct FavouriteRecord {
  uint32_t kept_0 : 4;
  uint32_t tv_count : 12;
  uint32_t radio_count : 12;
  uint32_t kept_28 : 4;

  char tv_name[kNameSize];
  char radio_name[kNameSize];
};
static_assert(sizeof(FavouriteRecord) == 44);

struct UserBoxInfo {
  uint8_t menu_language;  // positions in the configuration's language lists
  uint8_t audio_language;
  int8_t time_zone;      // half hours
  uint8_t flags;         // bit 0 summer time, 1 RF output, 2-3 TV standard, 4-5 screen, 6 parental lock
  uint8_t rf_channel;    // 21-69
  uint8_t start_volume;  // 0-63
  uint16_t start_programme;
  uint8_t kept[16];
  char lock_code[4];  // four digits as characters
};
static_assert(sizeof(UserBoxInfo) == 28);

// The text of a name field: up to its first NUL, the whole field when there is none.
template <size_t N>
std::string_view NameOf(const char (&field)[N]) {
  size_t length = 0;
  while (length < N && field[length] != 0) ++length;
  return {field, length};
}

// Stores `name`, cut to the field less one, NUL-padded.
template <size_t N>
void SetName(char (&field)[N], std::string_view name) {
  for (size_t i = 0; i < N; ++i) field[i] = i + 1 < N && i < name.size() ? name[i] : '\0';
}

}  // namespace vexa
