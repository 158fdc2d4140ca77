// The record dialogs without their windows: a form holds what the controls show, as UTF-8 texts and list
// positions.
//
// `...FormOf` fills a form from a record. `Store...` judges the form in the order of the rules; a Refusal
// names the text to show and the field to focus, and nothing is stored then. Questions and mere warnings go
// through Messages and storing goes on by their answer; after a question answered No the Refusal's text is
// empty, and only the focus moves.
//
// `page` is the one that the names of the database stand in; a character that it lacks is refused.
//
// A code for which a list has no entry (of a tone, switch, FEC ...; kNoCode when none is chosen) leaves the
// record's code as it is.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/bin_file.h"
#include "core/database.h"
#include "core/messages.h"
#include "core/rules.h"
#include "platform/code_page.h"
#include "view/refusal.h"

namespace vexa {

inline constexpr uint32_t kNoCode = 0xFFFFFFFF;
// No time zone is chosen, which leaves the record's as well.
inline constexpr int kNoZone = -1000;

enum RecordField : int {
  kFieldName,
  kFieldPosition,
  kFieldAngle,
  kFieldFrequency,
  kFieldSymbolRate,
  kFieldProgramNumber,
  kFieldVideoPid,
  kFieldAudioPid,
  kFieldPcrPid,
  kFieldOscillator1,
  kFieldOscillator2,
  kFieldRfChannel,
  kFieldStartVolume,
  kFieldStartProgramme,
  kFieldLockCode,
  kFieldMajor,
  kFieldMinor,
  kFieldInitials,
};

struct LnbForm {
  std::string frequency1, frequency2;  // MHz, up to 16383
  uint32_t type = kLnbNormal, power = 0, tone_22khz = 0;
  uint32_t switch_type = kSwitchNone;
  uint32_t selection = 0;  // in the list of the switch type
  uint32_t motor = 0;
};
// What the dialog shows when it opens, as for each kind of record below.
LnbForm LnbFormOf(const LnbRecord& record);
// Stores the switch field of the chosen type alone; the others and what the dialog clears become 0. The
// second word is stored only when the configuration's DatabaseVariant is 0.
std::optional<Refusal> StoreLnb(const LnbForm& form, LnbRecord& record, uint32_t database_variant);
// Choices of the selection list for a switch type: "None" and "A".. or "1"..
std::vector<std::string> SwitchChoices(uint32_t switch_type);

struct SatelliteForm {
  std::string name;
  uint32_t lnb_index = 0;  // from 0
  bool east = false;
  std::string angle;     // degrees, 0-360, up to one decimal
  std::string position;  // of the dish's motor, 0-64
  bool factory_default = true;
};
SatelliteForm SatelliteFormOf(const SatelliteRecord& record, const CodePage& page = Windows1252());
// An angle of 0 is warned of and stored.
std::optional<Refusal> StoreSatellite(const Messages& messages, const SatelliteForm& form,
                                      SatelliteRecord& record, const CodePage& page = Windows1252());

struct CarrierForm {
  std::string name, frequency, symbol_rate;      // MHz, kS/s
  uint32_t polarization = kHorizontal, fec = 0;  // codes of the record
  bool factory_default = true;
};
CarrierForm CarrierFormOf(const CarrierRecord& record, const CodePage& page = Windows1252());
// `lnb` is the LNB of the carrier's satellite.
std::optional<Refusal> StoreCarrier(const CarrierForm& form, const LnbRecord& lnb, CarrierRecord& record,
                                    const CodePage& page = Windows1252());

struct ServiceForm {
  std::string name, program_number;  // 0-65535
  uint32_t type = kTv;               // ServiceType
  bool free = true;
  std::string video_pid, audio_pid, pcr_pid;  // 0-8192
};
// `hexadecimal`: how the fields show and read PIDs.
ServiceForm ServiceFormOf(const ServiceRecord& record, bool hexadecimal,
                          const CodePage& page = Windows1252());
// `carrier` holds the service whose record this is; nullptr for the default record, which has no neighbours.
std::optional<Refusal> StoreService(const Messages& messages, const ServiceForm& form, bool hexadecimal,
                                    const Carrier* carrier, ServiceRecord& record,
                                    const CodePage& page = Windows1252());
// The same for a service of the database. One that becomes radio or TV leaves the favourite lists of its old
// type.
std::optional<Refusal> StoreService(const Messages& messages, const ServiceForm& form, bool hexadecimal,
                                    StaticDatabase& database, Service& service,
                                    const CodePage& page = Windows1252());

// Names of an SDB (6 characters are saved), of one half of a favourite group, of a user box record (7
// characters).
std::optional<Refusal> StoreSdbName(const std::string& name, OpenSdb& sdb,
                                    const CodePage& page = Windows1252());
std::optional<Refusal> StoreGroupName(const std::string& name, FavouriteGroup& group, bool radio,
                                      const CodePage& page = Windows1252());

struct UbiForm {
  std::string name;
  uint32_t menu_language = 0, audio_language = 0;  // places in the configuration's lists
  int time_zone = 0;                               // half hours
  bool summer_time = false, rf_output = false, parental_lock = false;
  uint32_t tv_standard = 0;                               // PAL, NTSC, Auto
  uint32_t screen = 0;                                    // 4:3, 16:9, letterbox
  std::string rf_channel, start_volume, start_programme;  // 21-69, 0-63, 0-65535
  std::string lock_code;                                  // four digits
};
UbiForm UbiFormOf(const OpenUbi& ubi, const CodePage& page = Windows1252());
// A number or code that stands as the record gave it is kept, also outside its range.
std::optional<Refusal> StoreUbi(const UbiForm& form, OpenUbi& ubi, const CodePage& page = Windows1252());

struct VersionForm {
  std::string major, minor;  // 0-255
  std::string initials;      // three are kept
};
VersionForm VersionFormOf(const BinVersion& version);
// Of the initials the first three characters, padded with spaces when the file is written.
std::optional<Refusal> StoreVersion(const VersionForm& form, BinVersion& version);

// The name that a record keeps of what a field holds, when `rule` (core/rules.h) passes it and the page has
// its characters.
std::optional<Refusal> JudgeName(const std::string& text, std::string (*rule)(std::string_view),
                                 const CodePage& page, std::string& name);

}  // namespace vexa
