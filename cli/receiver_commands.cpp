// ports, upload, download: the receiver's line. The simulated receiver has a file of its own.
#include "cli/receiver_commands.h"

#include <charconv>
#include <iostream>
#include <nlohmann/json.hpp>

#include "cli/line_job.h"
#include "cli/usage.h"
#include "image/adb.h"
#include "image/decoder.h"
#include "image/sha256.h"
#include "platform/text.h"
#include "serial/batch.h"
#include "serial/prepare.h"

namespace vexa {

namespace {

struct UploadOptions {
  LineOptions line;
  std::string file, sdb = "1", sdbs = "1", ubis = "none", format = "single", backup, log;
  uint32_t image_type = 0;
  CLI::Option* image_type_given = nullptr;
  bool verify = false, each = false;
};

void ExpectUploadApart(const CommandState& state, const UploadOptions& options) {
  ExpectApart({{"FILE", PathFromUtf8(options.file)},
               {"--ecf", ConfigurationFile(state)},
               {"--port", PathFromUtf8(options.line.port), true}},
              {{"--trace", PathFromUtf8(options.line.trace)}, {"--log", PathFromUtf8(options.log)}});
}

bool Upload(LineJob& job, const ProjectConfig& config, TransferJob kind, std::vector<Path> files) {
  ReceiverRun run = NewRun(job, config);
  return EndRun(job, run, RunUpload(run, kind, std::move(files)));
}

// A database as it goes to the receiver, and the configuration with the line.
struct AdbSource {
  ProjectConfig config;
  ReceiverBatch batch;
};

AdbSource OpenAdbSource(CommandState& state, const UploadOptions& options) {
  RequireTemporaryFolder(state);
  AdbSource source;
  source.config = LoadCommandConfig(state);
  SetLine(source.config, options.line);
  ReceiverBatch& batch = source.batch;
  batch.document = OpenDocument(state, options.file);
  batch.sdb = ParseList(state, options.sdb, batch.document.sdbs.size(), "SDB")[0];
  batch.database = options.file;
  batch.configuration = state.select;
  batch.verify = options.verify;
  batch.backup_folder = PathFromUtf8(options.backup);
  batch.log = PathFromUtf8(options.log);
  if (!options.log.empty())
    batch.sha256 = Sha256Text(ReadWholeFile(PathFromUtf8(options.file)).value_or(Bytes{}));
  return source;
}

// One receiver, with its row in the log.
bool ServeOne(LineJob& job, const AdbSource& source, const std::string& serial) {
  CommandState& state = job.state;
  ReceiverRun run = NewRun(job, source.config);
  RunEnd end = RunEnd::kFailed;
  const Outcome logged = ServeOneOf(run, source.batch, serial, CommandTime(state), end);
  const bool done = EndRun(job, run, end == RunEnd::kOk);
  if (!logged) {
    state.output_made = false;
    state.tells_after_interrupt = true;
    TellNotWritten(state, Utf8FromPath(source.batch.log), logged.error);
  }
  return done && logged;
}

// A receiver for each line of standard input, to its end.
bool ServeEach(LineJob& job, const AdbSource& source) {
  CommandState& state = job.state;
  bool all = true;
  for (std::string line; !InterruptWatch::IsInterrupted() && std::getline(std::cin, line);) {
    if (line.ends_with('\r')) line.pop_back();
    state.failure = {};
    state.last_detail.clear();
    const bool done = ServeOne(job, source, line);
    all = PrintDocument(job, EndOf(done), true) && done && all;
    // Of the whole command, which goes on.
    state.output_made = false;
    if (!InterruptWatch::IsInterrupted()) state.interruption.clear();
  }
  return all && !InterruptWatch::IsInterrupted();
}

void UploadAdb(CommandState& state, const UploadOptions& options) {
  const auto body = [&](LineJob& job) {
    const AdbSource source = OpenAdbSource(state, options);
    return MayServe(state.context, source.batch, source.config) &&
           (options.each ? ServeEach(job, source) : ServeOne(job, source, ""));
  };
  options.each ? RunLineList(state, options.line, body) : RunLineCommand(state, options.line, body);
}

void VerifyAdb(CommandState& state, const UploadOptions& options) {
  RunLineCommand(state, options.line, [&](LineJob& job) {
    const AdbSource source = OpenAdbSource(state, options);
    const ReceiverBatch& batch = source.batch;
    const auto images = BuildAdbImages(state.context, batch.document, batch.sdb, source.config);
    if (!images) return false;
    ReceiverRun run = NewRun(job, source.config);
    return EndRun(job, run, RunVerify(run, batch.document, batch.sdb, *images));
  });
}

std::vector<Path> PrepareSdb(CommandState& state, const UploadOptions& options, ProjectConfig& config) {
  config.sdb_format = options.format == "single" ? 0 : 1;
  config.image_type_chosen = options.image_type_given->count() > 0;
  if (options.image_type != 0 && options.image_type >= config.regions.size()) {
    TellWhy(
        state.context.messages, Icon::kStop,
        ConfigurationName(config) + Format(": choose one of its %zu regions, from 0.", config.regions.size()),
        "The configuration has no image type %u.", options.image_type);
    throw CommandFailed{};
  }
  config.image_type_index = static_cast<uint8_t>(options.image_type);
  const std::string replaced = ReplacedImageText(config);
  if (!replaced.empty()) Tell(state.context.messages, Icon::kWarning, "%s", replaced.c_str());
  const Document document = OpenDocument(state, options.file);
  const auto sdbs = ParseList(state, options.sdbs, document.sdbs.size(), "SDB");
  const auto ubis = ParseList(state, options.ubis, document.ubis.size(), "user box record");
  if (config.sdb_format == 0 && (sdbs.size() != 1 || !ubis.empty())) {
    throw CLI::ValidationError("--format", "single takes one SDB and no user box record");
  }
  auto files =
      PrepareSdbUpload(state.context, document, {MaskOf(sdbs), MaskOf(ubis)}, config, CommandTime(state));
  if (!files) throw CommandFailed{};
  return std::move(*files);
}

void UploadSdb(CommandState& state, const UploadOptions& options) {
  RunLineCommand(state, options.line, [&](LineJob& job) {
    RequireTemporaryFolder(state);
    ProjectConfig config = LoadCommandConfig(state);
    SetLine(config, options.line);
    auto files = PrepareSdb(state, options, config);
    return Upload(job, config, TransferJob::kSdb, std::move(files));
  });
}

void UploadUrt(CommandState& state, const UploadOptions& options) {
  RunLineCommand(state, options.line, [&](LineJob& job) {
    const Path file = PathFromUtf8(options.file);
    if (const auto why = WhyUnreadable(file)) {
      TellWhy(state.context.messages, Icon::kStop, ReadReason(file, why),
              "File access error - UploadURTPacketThread");
      return false;
    }
    ProjectConfig config;
    SetLine(config, options.line);
    return Upload(job, config, TransferJob::kConsole, {file});
  });
}

void Download(CommandState& state, const LineOptions& line, const std::string& output) {
  ExpectApart({{"--ecf", ConfigurationFile(state)}, {"--port", PathFromUtf8(line.port), true}},
              {{"--output", PathFromUtf8(output)}, {"--trace", PathFromUtf8(line.trace)}});
  RunLineCommand(state, line, [&](LineJob& job) {
    RequireTemporaryFolder(state);
    ProjectConfig config = LoadCommandConfig(state);
    SetLine(config, line);
    // A target that cannot be written is told before minutes on the line.
    if (const auto why = WhyNotWritable(PathFromUtf8(output)))
      ExpectWritten(state, output, {WriteResult::kCannotCreate, why});
    Bytes database;
    ReceiverRun run = NewRun(job, config);
    const bool fetched = RunFetch(run, TransferPhase::kDownload, [&] {
      auto decoded = DecodeDownload(state.context, config, UserBoxInfo{});
      if (decoded) database = std::move(decoded->file);
      return decoded.has_value();
    });
    EndRun(job, run, fetched);
    state.output_made = false;
    if (!fetched) return false;
    state.interruption = ": " + ReceiverState(run);
    try {
      WriteOutput(state, output, database);
    } catch (const CommandFailed&) {
      Tell(state.context.messages, Icon::kInformation, "%s", ReceiverStateSentence(run).c_str());
      throw;
    }
    return true;
  });
}

CLI::App& AddTransfer(CLI::App& parent, CommandState& state, const char* name, const char* what,
                      const std::shared_ptr<UploadOptions>& options,
                      void (*run)(CommandState&, const UploadOptions&)) {
  CLI::App& command = *parent.add_subcommand(name, what);
  command.add_option("FILE", options->file, "What to send, or to compare with")->required();
  AddLineOptions(command, options->line);
  command.callback([&state, options, run] {
    ExpectUploadApart(state, *options);
    run(state, *options);
  });
  return command;
}

void AddUploads(CLI::App& program, CommandState& state) {
  CLI::App& upload = *program.add_subcommand("upload", "Send a database or an image to the receiver");
  upload.require_subcommand(1);
  const auto adb_options = std::make_shared<UploadOptions>();
  CLI::App& adb =
      AddTransfer(upload, state, "adb", "Build the image of a database and send it", adb_options, UploadAdb);
  adb.add_option("--sdb", adb_options->sdb, "Which SDB, from 1")->check(CheckPlace);
  adb.add_flag("--verify", adb_options->verify, "Then read the receiver back and compare");
  adb.add_option("--backup", adb_options->backup, "Folder that first gets a copy of what the receiver holds");
  adb.add_flag("--each", adb_options->each,
               "One receiver after the other, each for a line of standard input, its serial number");
  adb.add_option("--log", adb_options->log, "CSV file that gets a row for each receiver");
  const auto sdb_options = std::make_shared<UploadOptions>();
  CLI::App& sdb =
      AddTransfer(upload, state, "sdb", "Send SDBs as they stand in files", sdb_options, UploadSdb);
  sdb.add_option("--sdb", sdb_options->sdbs, "SDBs: 1,3-5 or all")->check(CheckList);
  sdb.add_option("--ubi", sdb_options->ubis, "User box records: 1,3-5, all or none")->check(CheckListOrNone);
  sdb.add_option("--format", sdb_options->format, "single: the bare SDB; multiple: a database file")
      ->check(OneOf({"single", "multiple"}));
  sdb_options->image_type_given =
      sdb.add_option("--image-type", sdb_options->image_type,
                     "Region of the configuration, from 0 (default: the first of type 4, else 0)")
          ->check(CLI::Range(0, 255));
  for (CLI::App* command : {&adb, &sdb}) {
    AddConfigurationOptions(*command, state);
    AddTimeOption(*command, state);
  }
  AddTransfer(upload, state, "urt", "Send a URT file as it is, as the console does",
              std::make_shared<UploadOptions>(), UploadUrt);
}

void AddVerify(CLI::App& program, CommandState& state) {
  CLI::App& verify = *program.add_subcommand("verify", "Compare what the receiver holds with a database");
  verify.require_subcommand(1);
  const auto options = std::make_shared<UploadOptions>();
  CLI::App& adb =
      AddTransfer(verify, state, "adb", "Read the receiver back and compare it with the image of a database",
                  options, VerifyAdb);
  adb.add_option("--sdb", options->sdb, "Which SDB, from 1")->check(CheckPlace);
  AddConfigurationOptions(adb, state);
}

void AddDownload(CLI::App& program, CommandState& state) {
  struct Options {
    LineOptions line;
    std::string output;
  };
  const auto options = std::make_shared<Options>();
  CLI::App& download = *program.add_subcommand("download", "Fetch the receiver's database");
  download.add_option("-o,--output", options->output, "Database file to write")->required();
  AddLineOptions(download, options->line);
  AddConfigurationOptions(download, state);
  download.callback([&state, options] { Download(state, options->line, options->output); });
}

void Ports(CommandState& state, bool json) {
  if (json) {
    nlohmann::ordered_json root = {{"ports", nlohmann::ordered_json::array()}};
    for (const SerialPortInfo& port : ListSerialPorts())
      root["ports"].push_back({{"name", port.name}, {"text", port.description}});
    state.output = root.dump(2) + "\n";
    return;
  }
  for (const SerialPortInfo& port : ListSerialPorts()) {
    state.output += port.description.empty() ? port.name + "\n" : port.name + "\t" + port.description + "\n";
  }
}

}  // namespace

std::function<std::string(const std::string&)> NumberCheck(double lowest, double highest, const char* what) {
  return [=](const std::string& text) {
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    const bool right = read.ec == std::errc() && read.ptr == end && number >= lowest && number <= highest;
    return right ? std::string() : "\"" + text + "\" is no " + what;
  };
}

void OpenTrace(CommandState& state, Trace& trace, const std::string& file) {
  if (file.empty()) return;
  const Outcome opened = trace.Open(PathFromUtf8(file));
  if (!opened) ExpectWritten(state, file, {WriteResult::kCannotCreate, opened.error});
}

void TellNotWritten(CommandState& state, const std::string& file, const std::error_code& why) {
  TellWhy(state.context.messages, Icon::kStop, AdviceOn(Attempt::kWrite, CauseOf(why)),
          "Could not write \"%s\": %s", file.c_str(), SystemText(why).c_str());
}

bool IsTraceWritten(CommandState& state, Trace& trace, const std::string& file) {
  const Outcome closed = trace.Close();
  if (closed) return true;
  state.tells_after_interrupt = true;
  TellNotWritten(state, file, closed.error);
  return false;
}

void TellPorts(const CommandState& state) {
  std::string names;
  for (const SerialPortInfo& port : ListSerialPorts()) {
    names += (names.empty() ? "" : ", ") + port.name;
    if (!port.description.empty()) names += " (" + port.description + ")";
  }
  Tell(
      state.context.messages, Icon::kInformation, "%s",
      names.empty() ? "This system has no serial ports." : ("Serial ports of this system: " + names).c_str());
}

void AddReceiverCommands(CLI::App& program, CommandState& state) {
  CLI::App& ports = *program.add_subcommand("ports", "List the serial ports");
  const auto json = std::make_shared<bool>(false);
  ports.add_flag("--json", *json, "The same as one JSON document");
  ports.callback([&state, json] { Ports(state, *json); });
  AddUploads(program, state);
  AddVerify(program, state);
  AddDownload(program, state);
  AddLoaderCommand(program, state);
  AddTraceCommand(program, state);
}

}  // namespace vexa
