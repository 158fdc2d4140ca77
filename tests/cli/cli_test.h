// What the tests of the commands share: a folder of their own, and command lines written as they are typed.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/bin_file.h"
#include "platform/serial.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {

// What a script would see.
struct ProgramResult {
  int status = 0;
  std::string output, errors;
};

// Runs the command line program inside the test.
ProgramResult RunVexa(std::vector<std::string> arguments, const CommApi& line = SystemCommApi());

// UTF-8; an empty value is as none.
void SetEnvironment(const std::string& name, const std::string& value);

struct CliTest : testing::Test {
  Recorder recorder;

  Path At(const std::string& name) { return recorder.context.temporary_folder / PathFromUtf8(name); }
  std::string In(const std::string& name) { return Utf8FromPath(At(name)); }
  void Put(const std::string& name, const std::string& content) { PutFile(At(name), BytesOf(content)); }
  Bytes Get(const std::string& name) { return ReadWholeFile(At(name)).value_or(Bytes{}); }
  bool Exists(const std::string& name) { return std::filesystem::exists(At(name)); }
  Document Open(const std::string& name) {
    Document document;
    EXPECT_TRUE(OpenBin(recorder.context, At(name), document)) << name;
    return document;
  }
  void Save(const Document& document, const std::string& name) {
    EXPECT_TRUE(SaveBin(recorder.context, document, At(name)));
  }
  // Blanks part the arguments, but between single quotes; a leading '@' stands for the folder.
  ProgramResult Vexa(const std::string& line);
  std::vector<std::string> Words(const std::string& line);
  CommApi line_of_ports = SystemCommApi();  // what `Vexa` opens ports by
};

}  // namespace vexa
