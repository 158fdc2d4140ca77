#include "cli/line_job.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <nlohmann/json.hpp>

#include "cli/console.h"
#include "cli/receiver_commands.h"
#include "cli/usage.h"
#include "config/settings.h"
#include "platform/terminal.h"
#include "serial/verdict.h"

namespace vexa {

namespace {

std::vector<std::string> Texts(std::span<const char* const> texts) {
  return {texts.begin(), texts.end()};
}

uint8_t IndexOf(const std::vector<std::string>& texts, const std::string& text) {
  return static_cast<uint8_t>(std::find(texts.begin(), texts.end(), text) - texts.begin());
}

// A line a second, the first of each phase, and the last one, where all is done.
std::function<void(const TransferProgress&)> PlainLines(const std::shared_ptr<ErrorStream>& errors) {
  using Clock = std::chrono::steady_clock;
  struct State {
    std::optional<TransferProgress> last;
    Clock::time_point at;
  };
  const auto state = std::make_shared<State>();
  return [state, errors](const TransferProgress& now) {
    const auto& last = state->last;
    const bool same_phase =
        last && last->phase == now.phase && last->total == now.total && last->done <= now.done;
    const bool ended = now.done == now.total && same_phase && last->done != last->total;
    if (same_phase && !ended && Clock::now() - state->at < std::chrono::seconds(1)) return;
    state->last = now;
    state->at = Clock::now();
    errors->Print(PlainProgress(now) + "\n");
  };
}

// What failed and why; a comparison's verdict stands alone.
std::string FailureText(const Message& failure) {
  return failure.text == VerdictText(Verdict::kDiffers) ? failure.text
                                                        : WithReason(failure.text, failure.detail);
}

void RunLine(CommandState& state, const LineOptions& line, bool document,
             const std::function<bool(LineJob&)>& body) {
  LineJob job{state, line, {}, {}};
  bool done = false;
  try {
    OpenTrace(state, job.trace, line.trace);
    done = body(job);
  } catch (const CommandFailed&) {
  }
  done = IsTraceWritten(state, job.trace, line.trace) && done;
  state.errors->ShowLine("");
  if (document) done = PrintDocument(job, EndOf(done), false) && done;
  if (!done) throw CommandFailed{};
}

}  // namespace

void AddLineOptions(CLI::App& command, LineOptions& line) {
  command.add_option("--port", line.port, "Serial port: COM1, or the path of a terminal device")
      ->required()
      ->check([](const std::string& text) { return text.empty() ? "\"\" names no port" : std::string(); });
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
  command
      .add_option("--progress", line.progress,
                  "auto: a line that stays in its place, on a terminal; plain: a line a second")
      ->check(OneOf({"auto", "plain"}));
  command.add_flag("--json", line.json, "One document at the end with everything that was measured");
}

void SetLine(ProjectConfig& config, const LineOptions& line) {
  config.port_name = line.port;
  config.baud_index = IndexOf(OfferedLineSpeedTexts(), line.baud);
  config.parity_index = IndexOf(Texts(kParities), line.parity);
  config.data_bits_index = IndexOf(Texts(kDataBits), line.data_bits);
  config.stop_bits_index = IndexOf(Texts(kStopBits), line.stop_bits);
}

ReceiverRun NewRun(LineJob& job, const ProjectConfig& config) {
  ReceiverRun run;
  run.config = config;
  RunFace& face = run.face;
  const auto errors = job.state.errors;
  face.context = job.state.context;
  face.api = job.state.line;
  face.status = [errors](const std::string& text) { errors->Print(text + "\n"); };
  face.report = [errors](const std::string& text) { errors->Print(text); };
  face.cancelled = InterruptWatch::IsInterrupted;
  face.timeout = job.line.timeout;
  if (job.line.progress == "plain") {
    face.progress = PlainLines(errors);
  } else if (StandardErrorIsTerminal()) {
    face.progress = [errors](const TransferProgress& now) {
      errors->ShowLine(ProgressLine(now, TerminalColumns()));
    };
  }
  if (!job.line.trace.empty())
    face.tap = [&trace = job.trace](bool sent, std::span<const uint8_t> bytes) { trace.Bytes(sent, bytes); };
  return run;
}

bool EndRun(LineJob& job, const ReceiverRun& run, bool done) {
  job.result = run.result;
  job.state.errors->ShowLine("");
  if (done) {
    job.state.output_made = true;  // the receiver has it
  } else {
    job.state.interruption = ": " + ReceiverState(run);
    if (!run.problem.empty()) job.state.failure = {Icon::kStop, run.problem, "", ""};
    if (run.unopened) TellPorts(job.state);
  }
  return done;
}

RunEnd EndOf(bool done) {
  if (done) return RunEnd::kOk;
  return InterruptWatch::IsInterrupted() ? RunEnd::kCancelled : RunEnd::kFailed;
}

bool PrintDocument(LineJob& job, RunEnd end, bool in_one_line) {
  if (!job.line.json) return true;
  const RunResult& result = job.result;
  std::string message;
  if (end == RunEnd::kFailed) message = FailureText(job.state.failure);
  if (end == RunEnd::kCancelled) message = "The transfer was interrupted" + job.state.interruption + ".";
  nlohmann::ordered_json document = {
      {"result", RunEndName(end)},   {"phase", PhaseName(result.phase)},
      {"bytes", result.bytes},       {"packets", result.packets},
      {"repeated", result.repeated}, {"seconds", std::round(result.seconds * 1000) / 1000},
      {"verified", nullptr},         {"message", message}};
  if (result.verified) document["verified"] = *result.verified;
  job.state.output =
      document.dump(in_one_line ? -1 : 2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) +
      "\n";
  return PrintResults(job.state);
}

void RunLineCommand(CommandState& state, const LineOptions& line, const std::function<bool(LineJob&)>& body) {
  RunLine(state, line, true, body);
}

void RunLineList(CommandState& state, const LineOptions& line, const std::function<bool(LineJob&)>& body) {
  RunLine(state, line, false, body);
}

}  // namespace vexa
