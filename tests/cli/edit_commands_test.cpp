#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/bin_file.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "tests/support/run_vexa.h"

namespace vexa {
namespace {

using testing::HasSubstr;

struct EditCommands : testing::Test {
  Recorder recorder;
  std::string In(const char* name) { return Utf8FromPath(recorder.context.temporary_folder / name); }

  // Two SDBs of the satellites C, A, b; each with a carrier of three services; nothing wrong but what a test
  // changes.
  Document Make() {
    Document document;
    for (const char* name : {"ONE", "TWO"}) {
      StaticDatabase& database = *AppendSdb(document, name)->database;
      database.lnb_count = 1;
      for (const char* satellite : {"C", "A", "b"}) {
        AddTestSatellite(database, satellite)->record.angle = 10;
        Carrier* carrier = AddTestCarrier(database, database.satellites.size() - 1);
        SetName(carrier->record.name, "Carrier1");
        for (const uint32_t number : {3u, 1u, 2u}) {
          Service* service = AddTestService(database, carrier);
          SetName(service->record.name, Format("S%u", number));
          service->record.program_number = number & 0xFFFF;
          service->record.free = number & 1;
        }
      }
    }
    return document;
  }
  std::string Save(const Document& document) {
    EXPECT_TRUE(SaveBin(recorder.context, document, PathFromUtf8(In("in.bin"))));
    return In("in.bin");
  }
  // Names of the first three satellites, and of the services of the first carrier.
  std::string NamesIn(const std::string& file, size_t sdb) {
    Document document;
    EXPECT_TRUE(OpenBin(recorder.context, PathFromUtf8(file), document));
    std::string names;
    const StaticDatabase& database = *document.sdbs.at(sdb).database;
    for (size_t i = 0; i < 3; ++i) names += NameOf(database.satellites[i]->record.name);
    for (const Service* service : database.satellites[0]->carriers[0]->services)
      names += std::to_string(service->record.program_number);
    return names;
  }
};

TEST_F(EditCommands, SortFollowsItsOptions) {
  const std::string file = Save(Make()), out = In("out.bin");
  const struct {
    std::vector<std::string> options;
    const char *one, *two;
  } rows[] = {
      {{}, "CAb312", "CAb312"},
      {{"--satellites", "name"}, "AbC312", "AbC312"},
      {{"--satellites", "name", "--descending"}, "CbA312", "CbA312"},
      {{"--satellites", "angle,name", "--sdb", "2"}, "CAb312", "AbC312"},
      {{"--services", "name"}, "CAb123", "CAb123"},
      {{"--services", "status,name", "--sdb", "1"}, "CAb132", "CAb312"},
      {{"--services", "type,status,name", "--descending", "--carriers", "symbol-rate,frequency,name"},
       "CAb231",
       "CAb231"},
  };
  for (const auto& row : rows) {
    std::vector<std::string> arguments = {"sort", file, "-o", out};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    const ProgramResult result = RunVexa(arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output + result.errors, "");
    EXPECT_EQ(NamesIn(out, 0), row.one) << testing::PrintToString(row.options);
    EXPECT_EQ(NamesIn(out, 1), row.two) << testing::PrintToString(row.options);
  }
}

TEST_F(EditCommands, SortRefusesWrongUsageAndInvalidSdbs) {
  Document document = Make();
  const std::string file = Save(document), out = In("out.bin");
  const std::vector<std::vector<std::string>> rows = {
      {"--satellites", "name,name"},
      {"--satellites", "frequency"},
      {"--carriers", "name,"},
      {"--services", "Name"},
      {"--carriers", ""},
      {"--sdb", "x"},
  };
  for (const auto& row : rows) {
    std::vector<std::string> arguments = {"sort", file, "-o", out};
    arguments.insert(arguments.end(), row.begin(), row.end());
    EXPECT_EQ(RunVexa(arguments).status, 2) << testing::PrintToString(row);
  }
  EXPECT_FALSE(std::filesystem::exists(PathFromUtf8(out)));
  const ProgramResult result =
      RunVexa({"sort", file, "-o", In("no/such/folder.bin"), "--satellites", "name"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors, "error: Save as operation failed!!.\n");
}

TEST_F(EditCommands, CheckPrintsFindingsAndEndsWithOne) {
  Document document = Make();
  EXPECT_EQ(RunVexa({"check", Save(document)}).status, 0);
  document.sdbs[1].database->carriers[2]->record.frequency = 9000;
  document.sdbs[1].database->carriers[2]->services[1]->record.audio_pid = 31;
  const ProgramResult result = RunVexa({"check", Save(document)});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output,
            "TWO satellite 3 carrier 1: Carrier frequency should be in the range of 10700 - 12750\n"
            "TWO satellite 3 carrier 1 service 2: Invalid Audio PID. Do you want to update default PID ?\n");
  const ProgramResult missing = RunVexa({"check", In("missing.bin")});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.output, "");
  EXPECT_THAT(missing.errors, HasSubstr("error: "));
}

}  // namespace
}  // namespace vexa
