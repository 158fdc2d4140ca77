#include "tests/cli/cli_test.h"

namespace vexa {
namespace {

using testing::StartsWith;

struct EditCommands : CliTest {
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
          ServiceRecord& service = AddTestService(database, carrier)->record;
          SetName(service.name, Format("S%u", number));
          service.program_number = number & 0xFFFF;
          service.free = number & 1;
        }
      }
    }
    Save(document, "in.bin");
    return document;
  }
  // Names of the first three satellites, and of the services of the first carrier.
  std::string NamesIn(const std::string& file, size_t sdb) {
    const Document document = Open(file);
    std::string names;
    const StaticDatabase& database = *document.sdbs.at(sdb).database;
    for (size_t i = 0; i < 3; ++i) names += NameOf(database.satellites[i]->record.name);
    for (const Service* service : database.satellites[0]->carriers[0]->services)
      names += std::to_string(service->record.program_number);
    return names;
  }
};

TEST_F(EditCommands, SortFollowsItsOptions) {
  Make();
  const struct {
    std::string options;
    const char *one, *two;
  } rows[] = {
      {"", "CAb312", "CAb312"},
      {"--satellites name", "AbC312", "AbC312"},
      {"--satellites name --descending", "CbA312", "CbA312"},
      {"--satellites angle,name --sdb 2", "CAb312", "AbC312"},
      {"--services name", "CAb123", "CAb123"},
      {"--services status,name --sdb 1", "CAb132", "CAb312"},
      {"--services type,status,name --descending --carriers symbol-rate,frequency,name", "CAb231", "CAb231"},
  };
  for (const auto& row : rows) {
    const ProgramResult result = Vexa("sort @in.bin -o @out.bin " + row.options);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output + result.errors, "");
    EXPECT_EQ(NamesIn("out.bin", 0), row.one) << row.options;
    EXPECT_EQ(NamesIn("out.bin", 1), row.two) << row.options;
  }
}

TEST_F(EditCommands, SortRefusesWrongUsageAndPlaces) {
  Make();
  for (const std::string options : {"--satellites name,name", "--satellites frequency", "--carriers name,",
                                    "--services Name", "--carriers ''", "--sdb x"})
    EXPECT_EQ(Vexa("sort @in.bin -o @out.bin " + options).status, 2) << options;
  EXPECT_FALSE(Exists("out.bin"));
  const ProgramResult result = Vexa("sort @in.bin -o @no/such/folder.bin --satellites name");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors,  // between the two stands the system's own wording
              testing::AllOf(
                  StartsWith("error: Save as operation failed!!.\ninfo: " + In("no/such/folder.bin") + ": "),
                  testing::EndsWith(". Make the folder first, or choose another one.\n")));
}

TEST_F(EditCommands, CheckPrintsFindingsAndEndsWithOne) {
  Document document = Make();
  EXPECT_EQ(Vexa("check @in.bin").status, 0);
  document.sdbs[1].database->carriers[2]->record.frequency = 9000;
  document.sdbs[1].database->carriers[2]->services[1]->record.audio_pid = 31;
  Save(document, "in.bin");
  const ProgramResult result = Vexa("check @in.bin"), missing = Vexa("check @missing.bin");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output,
            "TWO satellite 3 carrier 1: Carrier frequency should be in the range of 10700 - 12750\n"
            "TWO satellite 3 carrier 1 service 2: Invalid Audio PID. Do you want to update default PID ?\n");
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.output, "");
  EXPECT_THAT(missing.errors, StartsWith("error: "));
}

}  // namespace
}  // namespace vexa
