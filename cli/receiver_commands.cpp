// ports, upload, download: the receiver's line. The simulated receiver has a file of its own.
#include "cli/receiver_commands.h"

#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "cli/usage.h"
#include "config/settings.h"
#include "image/decoder.h"
#include "platform/text.h"
#include "serial/prepare.h"
#include "serial/reports.h"
#include "serial/session.h"
#include "serial/trace.h"

namespace vexa {

namespace {

struct LineOptions {
  std::string port, baud = "115200", parity = "None", data_bits = "8", stop_bits = "1", trace;
  double timeout = 0;  // s; 0: none
};

struct UploadOptions {
  LineOptions line;
  std::string file, sdb = "1", sdbs = "1", ubis = "none", format = "single";
  uint32_t image_type = 0;
  CLI::Option* image_type_given = nullptr;
};

std::vector<std::string> Texts(std::span<const char* const> texts) {
  return {texts.begin(), texts.end()};
}

uint8_t IndexOf(const std::vector<std::string>& texts, const std::string& text) {
  return static_cast<uint8_t>(std::find(texts.begin(), texts.end(), text) - texts.begin());
}

void AddLineOptions(CLI::App& command, LineOptions& line) {
  command.add_option("--port", line.port, "Serial port: COM1, or the path of a terminal device")->required();
  command.add_option("--baud", line.baud, "Bits a second")->check(OneOf(OfferedLineSpeedTexts()));
  command.add_option("--parity", line.parity, "None, Even, Odd, Mark or Space")
      ->check(OneOf(Texts(kParities)));
  command.add_option("--data-bits", line.data_bits, "Bits of a byte")->check(OneOf(Texts(kDataBits)));
  command.add_option("--stop-bits", line.stop_bits, "1, 1.5 or 2")->check(OneOf(Texts(kStopBits)));
  command
      .add_option("--timeout", line.timeout,
                  "Give up after so many seconds without a new packet (default: wait until interrupted)")
      ->check(NumberCheck(0.001, 1e9, "number of seconds from 0.001"));
  command.add_option("--trace", line.trace, "File for what crosses the line, both ways, with times");
}

void SetLine(ProjectConfig& config, const LineOptions& line) {
  config.port_name = line.port;
  config.baud_index = IndexOf(OfferedLineSpeedTexts(), line.baud);
  config.parity_index = IndexOf(Texts(kParities), line.parity);
  config.data_bits_index = IndexOf(Texts(kDataBits), line.data_bits);
  config.stop_bits_index = IndexOf(Texts(kStopBits), line.stop_bits);
}

// What the command adds to a session: why it ended.
struct LineRun {
  TransferSession session;
  Trace trace;
  std::atomic<bool> pressed{false};
  std::atomic<bool> file_refused{false}, timed_out{false};
};

void PrintStatus(const std::string& text) {
  if (!text.empty()) std::fprintf(stderr, "%s\n", text.c_str());
}

void Connect(CommandState& state, LineRun& run, const LineOptions& line, TransferJob job) {
  Transfer& transfer = run.session.transfer;
  transfer.context = state.context;
  transfer.context.files = &SystemFiles();  // the job ends by its own rules
  run.session.port.api = state.line;
  run.session.port.messages =
      WatchedPortMessages(run.session.port, run.session.port_gone, state.context.messages);
  transfer.view.status = PrintStatus;
  transfer.view.range = state.context.progress.range;
  transfer.view.position = state.context.progress.position;
  transfer.view.press_cancel = [&run] { run.pressed = true; };
  transfer.report = [&run, job](int code) {
    ReportTarget target;
    target.frame_upload = job == TransferJob::kAdb || job == TransferJob::kSdb;
    target.download = job == TransferJob::kDownload;
    target.append = [](const std::string& text, ReportColour) { std::fputs(text.c_str(), stderr); };
    if (code == 23 && (run.file_refused || IsPortMissed(run.session) || run.timed_out))
      return;  // told already, and not the user's doing
    ReportLoaderStatus(target, code);
    if (code < 0) run.file_refused = true;
  };
  if (line.trace.empty()) return;
  OpenTrace(state, run.trace, line.trace);
  run.session.port.tap = [&run](bool sent, std::span<const uint8_t> bytes) { run.trace.Bytes(sent, bytes); };
}

// Until the job presses Cancel or is through, the user interrupts, or nothing moves. True: the job ended by
// itself.
bool AwaitJob(CommandState& state, LineRun& run, const LineOptions& line) {
  using Clock = std::chrono::steady_clock;
  Transfer& transfer = run.session.transfer;
  uint64_t moved = 0;
  auto last = Clock::now();
  while (!run.pressed && !IsTransferOver(run.session)) {
    if (InterruptWatch::IsInterrupted() || run.file_refused) return false;
    if (IsPortMissed(run.session)) break;
    const auto now = Clock::now();
    if (transfer.packets_moved != moved) {
      moved = transfer.packets_moved;
      last = now;
    }
    if (line.timeout > 0 && std::chrono::duration<double>(now - last).count() > line.timeout) {
      TellWhy(state.context.messages, Icon::kStop,
              line.port + ": no answer. Check the cable, and switch the receiver off and on.",
              "The transfer made no progress for %g seconds.", line.timeout);
      run.timed_out = true;
      return false;
    }
    AwaitTransfer(transfer, 20, [&run] { return run.pressed.load(); });
  }
  if (!IsPortMissed(run.session)) return true;
  TellWhy(state.context.messages, Icon::kStop, GoneReason(run.session.port),
          "%s is not available any more.\nThe transfer was ended.", line.port.c_str());
  return false;
}

// What state the receiver is in when the user ends a transfer.
std::string InterruptionText(const Transfer& transfer, TransferJob job) {
  const unsigned long long packets = transfer.packets_moved;
  if (job != TransferJob::kDownload && packets > 0)
    return Format(
        " after %llu packets: the receiver holds a part of the data and needs the whole upload again",
        packets);
  return ": the receiver keeps what it had, and may wait in its loader until it is switched off and on";
}

// Runs the whole transfer; throws CommandFailed unless it was done.
void RunTransfer(CommandState& state, std::unique_ptr<LineRun>& owned, const ProjectConfig& config,
                 const LineOptions& line, TransferJob job) {
  LineRun& run = *owned;
  if (InterruptWatch::IsInterrupted()) throw CommandFailed{};
  if (!StartTransfer(run.session, config, job)) {
    if (run.session.left_behind) static_cast<void>(owned.release());  // a thread still uses it
    TellPorts(state);
    throw CommandFailed{};
  }
  bool over = false;
  try {
    over = AwaitJob(state, run, line);
  } catch (...) {
    CancelTransfer(run.session);
    if (run.session.left_behind) static_cast<void>(owned.release());
    throw;
  }
  const bool interrupted = InterruptWatch::IsInterrupted() && !over;
  const bool ended = CancelTransfer(run.session) && over;
  if (interrupted) state.interruption = InterruptionText(run.session.transfer, job);
  const bool traced = IsTraceWritten(state, run.trace, line.trace);
  const bool done = ended && run.session.outcome == 1 && !run.file_refused && traced;
  if (run.session.left_behind) static_cast<void>(owned.release());
  if (!done) throw CommandFailed{};
  state.output_made = job != TransferJob::kDownload;  // the receiver has it
}

void Upload(CommandState& state, const ProjectConfig& config, const LineOptions& line, TransferJob job,
            std::vector<Path> files) {
  auto run = std::make_unique<LineRun>();
  Connect(state, *run, line, job);
  run->session.transfer.files = std::move(files);
  if (job == TransferJob::kSdb && !TestPort(run->session, config)) {
    TellPorts(state);
    throw CommandFailed{};
  }
  RunTransfer(state, run, config, line, job);
}

void ExpectUploadApart(const CommandState& state, const UploadOptions& options) {
  ExpectApart({{"FILE", PathFromUtf8(options.file)},
               {"--ecf", ConfigurationFile(state)},
               {"--port", PathFromUtf8(options.line.port)}},
              {{"--trace", PathFromUtf8(options.line.trace)}});
}

void UploadAdb(CommandState& state, const UploadOptions& options) {
  RequireTemporaryFolder(state);
  ProjectConfig config = LoadCommandConfig(state);
  SetLine(config, options.line);
  const Document document = OpenDocument(state, options.file);
  const auto chosen = ParseList(state, options.sdb, document.sdbs.size(), "SDB");
  auto files = PrepareAdbUpload(state.context, document, chosen[0], config, CommandTime(state));
  if (!files) throw CommandFailed{};
  Upload(state, config, options.line, TransferJob::kAdb, std::move(*files));
}

uint32_t MaskOf(const std::vector<size_t>& positions) {
  uint32_t mask = 0;
  for (const size_t position : positions) mask |= 1u << position;
  return mask;
}

void UploadSdb(CommandState& state, const UploadOptions& options) {
  RequireTemporaryFolder(state);
  ProjectConfig config = LoadCommandConfig(state);
  SetLine(config, options.line);
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
  Upload(state, config, options.line, TransferJob::kSdb, std::move(*files));
}

void UploadUrt(CommandState& state, const UploadOptions& options) {
  const Path file = PathFromUtf8(options.file);
  if (const auto why = WhyUnreadable(file)) {
    TellWhy(state.context.messages, Icon::kStop, ReadReason(file, why),
            "File access error - UploadURTPacketThread");
    throw CommandFailed{};
  }
  ProjectConfig config;
  SetLine(config, options.line);
  Upload(state, config, options.line, TransferJob::kConsole, {PathFromUtf8(options.file)});
}

void Download(CommandState& state, const LineOptions& line, const std::string& output) {
  ExpectApart({{"--ecf", ConfigurationFile(state)}, {"--port", PathFromUtf8(line.port)}},
              {{"--output", PathFromUtf8(output)}, {"--trace", PathFromUtf8(line.trace)}});
  RequireTemporaryFolder(state);
  ProjectConfig config = LoadCommandConfig(state);
  SetLine(config, line);
  // A target that cannot be written is told before minutes on the line.
  if (const auto why = WhyNotWritable(PathFromUtf8(output)))
    ExpectWritten(state, output, {WriteResult::kCannotCreate, why});
  auto files = PrepareDownload(state.context, config);
  if (!files) throw CommandFailed{};
  auto run = std::make_unique<LineRun>();
  Connect(state, *run, line, TransferJob::kDownload);
  Bytes database;
  Transfer& transfer = run->session.transfer;
  transfer.files = std::move(files->script);
  transfer.region_files = std::move(files->regions);
  transfer.decode = [&](bool crc_failed) {
    if (crc_failed) {
      Tell(state.context.messages, Icon::kStop, "CRC Verification - failed \n Retry once again");
      return false;
    }
    PrintStatus("CRC Verification - Success");
    auto decoded = DecodeDownload(state.context, config, UserBoxInfo{});
    if (decoded) database = std::move(decoded->file);
    return decoded.has_value();
  };
  RunTransfer(state, run, config, line, TransferJob::kDownload);
  if (!transfer.decoded) throw CommandFailed{};
  WriteOutput(state, output, database);
}

CLI::App& AddUpload(CLI::App& upload, CommandState& state, const char* name, const char* what,
                    const std::shared_ptr<UploadOptions>& options,
                    void (*run)(CommandState&, const UploadOptions&)) {
  CLI::App& command = *upload.add_subcommand(name, what);
  command.add_option("FILE", options->file, "What to send")->required();
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
      AddUpload(upload, state, "adb", "Build the image of a database and send it", adb_options, UploadAdb);
  adb.add_option("--sdb", adb_options->sdb, "Which SDB, from 1")->check(CheckPlace);
  const auto sdb_options = std::make_shared<UploadOptions>();
  CLI::App& sdb = AddUpload(upload, state, "sdb", "Send SDBs as they stand in files", sdb_options, UploadSdb);
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
  AddUpload(upload, state, "urt", "Send a URT file as it is, as the console does",
            std::make_shared<UploadOptions>(), UploadUrt);
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

bool IsTraceWritten(CommandState& state, Trace& trace, const std::string& file) {
  const Outcome closed = trace.Close();
  if (closed) return true;
  state.tells_after_interrupt = true;
  TellWhy(state.context.messages, Icon::kStop, AdviceOn(Attempt::kWrite, CauseOf(closed.error)),
          "Could not write \"%s\": %s", file.c_str(), SystemText(closed.error).c_str());
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
  AddDownload(program, state);
  AddLoaderCommand(program, state);
}

}  // namespace vexa
