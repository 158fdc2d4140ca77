#include "core/fields.h"

#include "core/code_names.h"

namespace vexa {

namespace {

constexpr std::span<const char* const> kPlain;

constexpr int64_t Largest(int bits) {
  return (int64_t{1} << bits) - 1;
}

// A bit-field of `bits` bits.
#define VEXA_FIELD(record, key, member, bits, follows, words)                        \
  {                                                                                  \
    key, 0, Largest(bits), follows, words,                                           \
        [](const record& from) { return static_cast<int64_t>(from.member); },        \
        [](record& to, int64_t value) {                                              \
          to.member = static_cast<uint32_t>(value) & (0xFFFFFFFFu >> (32 - (bits))); \
        }                                                                            \
  }

constexpr Field<LnbRecord> kLnbFields[] = {
    VEXA_FIELD(LnbRecord, "frequency1", frequency1, 14, false, kPlain),
    VEXA_FIELD(LnbRecord, "frequency2", frequency2, 14, false, kPlain),
    VEXA_FIELD(LnbRecord, "type", type, 2, false, kLnbTypes),
    VEXA_FIELD(LnbRecord, "power", power, 1, false, kOffOn),
    VEXA_FIELD(LnbRecord, "kept_word0_31", kept_31, 1, false, kPlain),
    VEXA_FIELD(LnbRecord, "kept_word1_0_1", cleared_0, 2, false, kPlain),
    VEXA_FIELD(LnbRecord, "diseqc_switch", diseqc_switch, 3, false, kDiseqcPlaces),
    VEXA_FIELD(LnbRecord, "plain_switch", plain_switch, 5, false, kPlainSwitches),
    VEXA_FIELD(LnbRecord, "tone_burst_switch", tone_burst_switch, 2, false, kToneBursts),
    VEXA_FIELD(LnbRecord, "kept_word1_12_14", cleared_12, 3, false, kPlain),
    VEXA_FIELD(LnbRecord, "tone_22khz", tone_22khz, 2, false, kTones),
    VEXA_FIELD(LnbRecord, "switch_type", switch_type, 2, false, kSwitchTypes),
    VEXA_FIELD(LnbRecord, "motor", motor, 1, false, kMotors),
    VEXA_FIELD(LnbRecord, "kept_word1_20_31", kept_20, 12, false, kPlain),
};

constexpr Field<SatelliteRecord> kSatelliteFields[] = {
    VEXA_FIELD(SatelliteRecord, "carrier_count", carrier_count, 16, true, kPlain),
    VEXA_FIELD(SatelliteRecord, "lnb_index", lnb_index, 8, false, kPlain),
    VEXA_FIELD(SatelliteRecord, "position", position, 8, false, kPlain),
    VEXA_FIELD(SatelliteRecord, "user", user, 1, false, kPlain),
    VEXA_FIELD(SatelliteRecord, "east", east, 1, false, kSides),
    VEXA_FIELD(SatelliteRecord, "angle", angle, 12, false, kPlain),
    VEXA_FIELD(SatelliteRecord, "kept_word1_14_31", kept_14, 18, false, kPlain),
};

constexpr Field<CarrierRecord> kCarrierFields[] = {
    VEXA_FIELD(CarrierRecord, "frequency", frequency, 32, false, kPlain),
    VEXA_FIELD(CarrierRecord, "symbol_rate", symbol_rate, 24, false, kPlain),
    VEXA_FIELD(CarrierRecord, "polarization", polarization, 2, false, kPolarizations),
    VEXA_FIELD(CarrierRecord, "fec", fec, 3, false, kFecs),
    VEXA_FIELD(CarrierRecord, "user", user, 1, false, kPlain),
    VEXA_FIELD(CarrierRecord, "lnb_index", lnb_index, 8, true, kPlain),
    VEXA_FIELD(CarrierRecord, "first_service", first_service, 16, true, kPlain),
    VEXA_FIELD(CarrierRecord, "service_count", service_count, 16, true, kPlain),
    VEXA_FIELD(CarrierRecord, "satellite_index", satellite_index, 10, true, kPlain),
    VEXA_FIELD(CarrierRecord, "kept_word2_16_31", kept_16, 16, false, kPlain),
};

constexpr Field<ServiceRecord> kServiceFields[] = {
    VEXA_FIELD(ServiceRecord, "program_number", program_number, 16, false, kPlain),
    VEXA_FIELD(ServiceRecord, "carrier_index", carrier_index, 16, true, kPlain),
    VEXA_FIELD(ServiceRecord, "video_pid", video_pid, 14, false, kPlain),
    VEXA_FIELD(ServiceRecord, "audio_pid", audio_pid, 14, false, kPlain),
    VEXA_FIELD(ServiceRecord, "pcr_pid", pcr_pid, 14, false, kPlain),
    VEXA_FIELD(ServiceRecord, "type", type, 2, false, kServiceTypes),
    VEXA_FIELD(ServiceRecord, "free", free, 1, false, kPlain),
    VEXA_FIELD(ServiceRecord, "kept_word1_28_31", kept_28, 4, false, kPlain),
    VEXA_FIELD(ServiceRecord, "kept_word2_17_31", kept_17, 15, false, kPlain),
};

constexpr Field<FavouriteRecord> kFavouriteFields[] = {
    VEXA_FIELD(FavouriteRecord, "kept_word0_0_3", kept_0, 4, false, kPlain),
    VEXA_FIELD(FavouriteRecord, "kept_word0_28_31", kept_28, 4, false, kPlain),
};

// Some bits of a user box's byte of flags.
template <int kShift, int kBits>
int64_t FlagBits(const UserBoxInfo& box) {
  return box.flags >> kShift & Largest(kBits);
}
template <int kShift, int kBits>
void SetFlagBits(UserBoxInfo& box, int64_t value) {
  constexpr int64_t kMask = Largest(kBits) << kShift;
  box.flags = static_cast<uint8_t>((box.flags & ~kMask) | (value << kShift & kMask));
}

constexpr Field<UserBoxInfo> kUserBoxFields[] = {
    VEXA_FIELD(UserBoxInfo, "menu_language", menu_language, 8, false, kPlain),
    VEXA_FIELD(UserBoxInfo, "audio_language", audio_language, 8, false, kPlain),
    {"time_zone", -128, 127, false, kPlain,
     [](const UserBoxInfo& from) { return static_cast<int64_t>(from.time_zone); },
     [](UserBoxInfo& to, int64_t value) { to.time_zone = static_cast<int8_t>(value); }},
    {"summer_time", 0, 1, false, kPlain, FlagBits<0, 1>, SetFlagBits<0, 1>},
    {"rf_output", 0, 1, false, kPlain, FlagBits<1, 1>, SetFlagBits<1, 1>},
    {"tv_standard", 0, 3, false, kTvStandards, FlagBits<2, 2>, SetFlagBits<2, 2>},
    {"screen", 0, 3, false, kScreens, FlagBits<4, 2>, SetFlagBits<4, 2>},
    {"parental_lock", 0, 1, false, kPlain, FlagBits<6, 1>, SetFlagBits<6, 1>},
    {"kept_byte3_7", 0, 1, false, kPlain, FlagBits<7, 1>, SetFlagBits<7, 1>},
    VEXA_FIELD(UserBoxInfo, "rf_channel", rf_channel, 8, false, kPlain),
    VEXA_FIELD(UserBoxInfo, "start_volume", start_volume, 8, false, kPlain),
    VEXA_FIELD(UserBoxInfo, "start_programme", start_programme, 16, false, kPlain),
};

#undef VEXA_FIELD

constexpr char kDigits[] = "0123456789abcdef";

template <class Byte, size_t N>
std::string HexadecimalText(const Byte (&bytes)[N]) {
  std::string text;
  for (const Byte byte : bytes) {
    text += kDigits[static_cast<uint8_t>(byte) >> 4];
    text += kDigits[static_cast<uint8_t>(byte) & 15u];
  }
  return text;
}

template <class Byte, size_t N>
bool SetHexadecimalText(Byte (&bytes)[N], std::string_view text) {
  uint8_t read[N] = {};
  if (text.size() != 2 * N) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i] >= 'A' && text[i] <= 'F' ? static_cast<char>(text[i] - 'A' + 'a') : text[i];
    const size_t digit = std::string_view(kDigits, 16).find(c);
    if (digit == std::string_view::npos) return false;
    read[i / 2] = static_cast<uint8_t>(static_cast<size_t>(read[i / 2]) << 4 | digit);
  }
  for (size_t i = 0; i < N; ++i) bytes[i] = static_cast<Byte>(read[i]);
  return true;
}

}  // namespace

template <>
std::span<const Field<LnbRecord>> FieldsOf() {
  return kLnbFields;
}
template <>
std::span<const Field<SatelliteRecord>> FieldsOf() {
  return kSatelliteFields;
}
template <>
std::span<const Field<CarrierRecord>> FieldsOf() {
  return kCarrierFields;
}
template <>
std::span<const Field<ServiceRecord>> FieldsOf() {
  return kServiceFields;
}
template <>
std::span<const Field<FavouriteRecord>> FieldsOf() {
  return kFavouriteFields;
}
template <>
std::span<const Field<UserBoxInfo>> FieldsOf() {
  return kUserBoxFields;
}

std::string KeptText(const UserBoxInfo& box) {
  return HexadecimalText(box.kept);
}
std::string LockCodeText(const UserBoxInfo& box) {
  return HexadecimalText(box.lock_code);
}
bool SetKeptText(UserBoxInfo& box, std::string_view text) {
  return SetHexadecimalText(box.kept, text);
}
bool SetLockCodeText(UserBoxInfo& box, std::string_view text) {
  return SetHexadecimalText(box.lock_code, text);
}

}  // namespace vexa
