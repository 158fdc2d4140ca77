// A second reader of SatcoDX lists, slow and literal: it keeps work files as bytes, rewrites records in place
// and walks the list of program numbers entry by entry. Random lists must give the same bytes with both.
#include <gtest/gtest.h>

#include <cctype>
#include <random>

#include "import/satcodx.h"
#include "tests/support/list_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using Text = std::string;

uint32_t Number(const Text& text) {
  size_t i = 0;
  while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  uint32_t value = 0;
  for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i) {
    value = value * 10 + static_cast<uint32_t>(text[i] - '0');
  }
  return value;
}

Text FitName(Text name) {
  name = name.substr(0, 19);
  name.resize(20, '\0');
  return name;
}

Text Trimmed(Text field) {
  field.resize(20, '\0');
  const Text visible = field.substr(0, field.find('\0'));
  const size_t spaces = visible.find("  ");
  if (spaces != Text::npos) return FitName(visible.substr(0, spaces));
  field[19] = '\0';
  return field;
}

void Put(Text& bytes, uint64_t value, int count) {
  for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
}

struct Sat {
  Text name;
  uint32_t position = 0, first = 0, count = 0;
};
struct Car {
  Text name;
  uint32_t rate = 27500, frequency = 10700, polarization = 0, fec = 0, satellite = 0, first = 0, count = 0;
};
struct Ser {
  Text name;
  uint32_t video = 0, audio = 0, pcr = 0, id = 0, type = 0, free = 0, carrier = 0;
};

struct Oracle {
  std::vector<Sat> satellites;
  std::vector<Car> carriers;
  std::vector<Ser> services;
  Ser previous;
  std::vector<uint32_t> ids;
  uint32_t in_satellite = 0;
  bool layout_a = false;

  void AddCarrier(Car carrier) {
    carrier.satellite = static_cast<uint32_t>(satellites.size() - 1);
    carrier.first = static_cast<uint32_t>(services.size());
    carriers.push_back(carrier);
    satellites.back().count = ++in_satellite;
    previous = {};
    ids.clear();
  }

  uint32_t FreeId(uint32_t id) const {
    for (size_t i = 0; i < ids.size();) {
      if (ids[i] == id) {
        id = (id + 1) & 0xFFFF;
        i = 1;
      } else {
        ++i;
      }
    }
    return id;
  }

  static Car Transponder(const Text& r) {
    Car carrier;
    carrier.rate = Number(r.substr(69, 5));
    carrier.frequency = Number(r.substr(33, 6));
    switch (Number(r.substr(42, 1))) {
      case 0:
        carrier.polarization = 1;
        break;
      case 1:
        carrier.polarization = 0;
        break;
      case 2:
        carrier.polarization = 2;
        break;
      case 3:
        carrier.polarization = 3;
        break;
      default:
        break;
    }
    return carrier;
  }

  static uint32_t Fec(const Text& r) {
    if (r[74] == '_') return 0;
    const uint32_t n = Number(r.substr(74));
    if (n == 5) return 4;
    if (n == 7) return 5;
    return n % 8 > 5 ? 0 : n % 8;
  }

  static uint32_t Pid(const Text& column) { return column == "____" ? 8192 : Number(column) % 16384; }

  void TakeSatellite(const Text& r) {
    Text name = layout_a ? r.substr(10, 18) : r.substr(115, 12);
    if (name.find_first_not_of('_') == Text::npos) name = "Satellite" + std::to_string(satellites.size());
    name = FitName(name);
    const uint32_t position = Number(r.substr(51, 4)) % 4096;
    bool same = false;
    if (!satellites.empty()) {
      same = position != 0 ? position == satellites.back().position : name == satellites.back().name;
    }
    if (same) return;
    satellites.push_back({name, position, static_cast<uint32_t>(carriers.size()), 0});
    in_satellite = 0;
  }

  void TakeService(const Text& r) {
    Ser service;
    Text name = r.substr(43, 8);
    name = name.substr(0, name.find('_'));
    name.resize(name.size());
    const size_t length = name.size();
    name.resize(20, '\0');
    if (layout_a) {
      const Text rest = r.substr(115, 12);
      const size_t k = rest.find('_');
      if (k == Text::npos) {
        name.replace(length, 12, rest);
      } else {
        name.replace(0, k, rest.substr(0, k));
      }
    }
    service.name = Trimmed(name);
    service.carrier = static_cast<uint32_t>(carriers.size() - 1);
    service.video = Pid(r.substr(75, 4));
    service.audio = Pid(r.substr(79, 4));
    service.pcr = Pid(r.substr(83, 4));
    service.id = FreeId(Number(r.substr(87, 5)) % 65536);
    service.type = r[28] == 'T' ? 1 : r[28] == 'R' ? 2 : 0;
    service.free = r.substr(111, 4) == "____";
    bool keep = true;
    if (previous.video == service.video) {
      if (previous.video == 0 && previous.audio != service.audio) {
        keep = true;
      } else if (previous.carrier == service.carrier && !services.empty()) {
        keep = false;
      }
    }
    if (!keep || service.type == 0) return;
    services.push_back(service);
    ++carriers.back().count;
    previous = service;
    ids.push_back(service.id);
  }

  void TakeRecord(const Text& r) {
    TakeSatellite(r);
    const Text rate = r.substr(69, 5);
    if (rate == "_____" || rate == "00000") return;
    Car carrier = Transponder(r);
    if (r[28] == '_') {
      carrier.fec = Fec(r);
      carrier.name = Trimmed(r.substr(43, 8) + (layout_a ? r.substr(115, 12) : ""));
      return AddCarrier(carrier);
    }
    const bool same = !carriers.empty() && carriers.back().rate == carrier.rate &&
                      carriers.back().frequency == carrier.frequency &&
                      carriers.back().polarization == carrier.polarization;
    if (!same) {
      carrier.fec = Fec(r);
      carrier.name =
          FitName("Carrier" + std::to_string(in_satellite + 1) + "_S" + std::to_string(satellites.size()));
      AddCarrier(carrier);
    }
    TakeService(r);
  }

  void Read(const Text& list) {
    const size_t length = list.size() > 128 && list[128] == 'S' ? 128 : 129;
    if (list.size() < length) return;
    const Text version = list.substr(8, 2);
    layout_a = version == "02" || version == "03";
    for (size_t at = 0; at + length <= list.size(); at += length) TakeRecord(list.substr(at, 127));
  }

  Text Satellites() const {
    Text bytes;
    for (const Sat& s : satellites) {
      Put(bytes, s.first, 2);
      Put(bytes, s.count, 2);
      Put(bytes, 1u << 8 | s.position << 17, 4);
      bytes += s.name;
    }
    return bytes;
  }
  Text Carriers() const {
    Text bytes;
    for (const Car& c : carriers) {
      Put(bytes, c.rate % (1u << 24), 4);
      Put(bytes, c.first, 2);
      Put(bytes, c.count, 2);
      Put(bytes, c.satellite % 1024 | c.polarization << 10 | c.fec << 14 | 1u << 17, 4);
      bytes += c.name;
      Put(bytes, c.frequency, 4);
    }
    return bytes;
  }
  Text Services() const {
    Text bytes;
    for (const Ser& s : services) {
      Put(bytes, s.carrier % 65536 | s.video << 16 | 1u << 30, 4);
      Put(bytes, s.id, 4);
      bytes += s.name;
      Put(bytes, s.audio | s.pcr << 14 | s.free << 28 | 1u << 29 | s.type << 30, 4);
    }
    return bytes;
  }
};

class Maker {
 public:
  explicit Maker(unsigned seed) : random_(seed) {}

  Text List() {
    std::vector<SdxRecord> records(1 + Roll(60));
    const char* version = Pick({"02", "03", "04", "__"});
    for (SdxRecord& record : records) Fill(record, version);
    Text list = SdxList(records, Roll(2) == 0);
    for (size_t n = Roll(3) == 0 ? Roll(40) : 0; n > 0; --n) {
      // Digits, underscores, blanks and any byte, so that damage still meets the rules.
      const char any = static_cast<char>(Roll(256));
      list[Roll(list.size())] = Roll(3) == 0 ? any : "_0159 STR"[Roll(9)];
    }
    if (Roll(8) == 0) list.resize(Roll(list.size()));
    return list;
  }

 private:
  size_t Roll(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random_); }
  const char* Pick(std::vector<const char*> choices) { return choices[Roll(choices.size())]; }
  void Fill(SdxRecord& record, const char* version) {
    record.version = version;
    record.satellite = Pick({"ASTRA 1", "HOTBIRD", "TURKSAT", "__________________"});
    record.type = Pick({"T", "T", "T", "R", "R", "_", "D"});
    record.frequency = Pick({"011778", "011778", "010744", "004000", "______"});
    record.polarization = Pick({"0", "1", "2", "3", "4", "_"});
    if (Roll(3) != 0) record.polarization = "0";
    record.name = Pick({"ARTE____", "SPORT___", "RTL TELE", "A  B____", "________", "TV 5    "});
    record.rest = Pick({"____________", "VISION HD PL", "ABC_________", "_BC_________", "A  BCDEFGHIJ"});
    record.position = Pick({"0192", "0192", "0192", "0130", "0000", "____", "4096"});
    record.symbol_rate = Pick({"27500", "27500", "27500", "22000", "_____", "00000"});
    record.fec = Pick({"_", "1", "3", "5", "7", "9"});
    record.video = Pick({"0401", "0402", "0403", "0000", "____"});
    record.audio = Pick({"0501", "0502", "____", "9999"});
    record.pcr = Pick({"0401", "____", "8190"});
    record.id = Pick({"00001", "00002", "00003", "65535", "_____", "99999"});
    record.access = Pick({"____", "___1", "0100"});
  }
  std::mt19937 random_;
};

TEST(SatcodxOracle, RandomLists) {
  for (unsigned seed = 1; seed <= 3000; ++seed) {
    const Text list = Maker(seed).List();
    Oracle oracle;
    oracle.Read(list);
    WorkFiles work;
    ReadSatcodx(BytesOf(list), DefaultRecords{}, work);
    ASSERT_EQ(BytesOfRecords(work.satellites), BytesOf(oracle.Satellites())) << "seed " << seed;
    ASSERT_EQ(BytesOfRecords(work.carriers), BytesOf(oracle.Carriers())) << "seed " << seed;
    ASSERT_EQ(BytesOfRecords(work.services), BytesOf(oracle.Services())) << "seed " << seed;
  }
}

}  // namespace
}  // namespace vexa
