// loader: the simulated receiver on a pseudo-terminal, or on a port that is there already.
#include <cstdio>

#include "cli/receiver_commands.h"
#include "cli/usage.h"
#include "loader/run.h"
#include "serial/trace.h"

namespace vexa {

namespace {

constexpr uint32_t kPortBaud = 115200;  // of a real port without --baud

struct LoaderOptions {
  std::string link, memory, log;
  LoaderFaults faults;
  LoaderRun run;
};

// False after a message.
bool SaveTo(CommandState& state, const Receiver& receiver, const std::string& folder) {
  const Outcome saved = folder.empty() ? Outcome() : SaveMemory(receiver.memory, PathFromUtf8(folder));
  if (saved) return true;
  TellWhy(state.context.messages, Icon::kStop, Reason(Attempt::kWrite, folder, saved.error),
          "Could not write the memory to \"%s\".", folder.c_str());
  return false;
}

// A port that is there already is opened as one; elsewhere a pseudo-terminal is made.
std::unique_ptr<PseudoTerminal> OpenLine(CommandState& state, const std::string& link, LoaderRun& run) {
  auto terminal = OpenPseudoTerminal(PathFromUtf8(link));
  if (terminal) return std::move(terminal.value);
  if (run.baud == 0) run.baud = kPortBaud;
  if (auto port = OpenReceiverPort(link, run.baud, state.context.messages)) return port;
  // What stands there is kept.
  const bool taken = terminal.error == std::errc::file_exists;
  const std::string why =
      taken            ? link + ": It is no serial port. Choose a name that is not taken, or a serial port."
      : terminal.error ? Reason(Attempt::kWrite, link, terminal.error)
                       : "";
  TellWhy(state.context.messages, Icon::kStop, why, "No line can be made or opened at \"%s\".", link.c_str());
  TellPorts(state);
  throw CommandFailed{};
}

void RunLoader(CommandState& state, const LoaderOptions& options) {
  state.tells_after_interrupt = true;  // its memory and log are written at the end
  ExpectApart({}, {{"--link", PathFromUtf8(options.link)},
                   {"--memory", PathFromUtf8(options.memory)},
                   {"--log", PathFromUtf8(options.log)}});
  Trace log;
  OpenTrace(state, log, options.log);
  LoaderMemory memory;
  if (!options.memory.empty()) {
    // What cannot be read would be taken for old at the end, and removed.
    std::string why;
    auto kept = OpenMemory(PathFromUtf8(options.memory), why);
    if (!kept) {
      TellWhy(state.context.messages, Icon::kStop, why, "Could not read the memory from \"%s\".",
              options.memory.c_str());
      throw CommandFailed{};
    }
    memory = std::move(*kept);
  }
  LoaderRun run = options.run;
  const auto terminal = OpenLine(state, options.link, run);
  Receiver receiver = MakeReceiver(options.faults, std::move(memory));
  receiver.note = [&log](const std::string& line) { log.Line(line); };
  bool saved = true;
  receiver.stored = [&] { saved = SaveTo(state, receiver, options.memory) && saved; };
  run.tap = [&log](bool from_pc, std::span<const uint8_t> bytes) { log.Bytes(from_pc, bytes); };
  run.stop = InterruptWatch::IsInterrupted;
  std::fprintf(stderr, "Receiver at %s\n", terminal->path.c_str());
  RunReceiver(receiver, *terminal, run);
  saved = SaveTo(state, receiver, options.memory) && saved;
  const bool logged = IsTraceWritten(state, log, options.log);
  if (terminal->gone)
    TellWhy(state.context.messages, Icon::kStop, AdviceOn(Attempt::kUsePort, Cause::kGone),
            "%s is not available any more.", terminal->path.c_str());
  if (!saved || !logged || terminal->gone) throw CommandFailed{};
}

}  // namespace

void AddLoaderCommand(CLI::App& program, CommandState& state) {
  const auto options = std::make_shared<LoaderOptions>();
  CLI::App& loader =
      *program.add_subcommand("loader", "A simulated receiver on a pseudo-terminal or a serial port");
  loader
      .add_option("--link", options->link,
                  "Path of the line's other end to be made; or a serial port that is there")
      ->required()
      ->check([](const std::string& text) { return text.empty() ? "\"\" names no line" : std::string(); });
  loader.add_option("--memory", options->memory, "Folder that keeps the memory between runs");
  loader.add_option("--log", options->log, "File for what crosses the line, both ways, with times");
  loader.add_flag("--once", options->run.once, "End after one session");
  loader.add_option("--baud", options->run.baud, "Pace both directions, bits a second; of a port, its speed")
      ->check(CLI::Range(1, 100000000));
  loader.add_option("--seed", options->faults.seed, "Repeats the same faults")->check(CheckNumber);
  const std::pair<const char*, double*> faults[] = {{"--nak", &options->faults.nak},
                                                    {"--corrupt", &options->faults.corrupt},
                                                    {"--drop", &options->faults.drop},
                                                    {"--silence", &options->faults.silence},
                                                    {"--reset", &options->faults.reset}};
  const char* texts[] = {"Probability that a good upload frame is refused",
                         "Probability of a flipped bit in a sent frame",
                         "Probability that a handshake byte is left out",
                         "Probability, at each frame, of falling silent until the next wake-up",
                         "Probability, at each frame, of starting anew in the middle"};
  for (size_t i = 0; i < std::size(faults); ++i) {
    loader.add_option(faults[i].first, *faults[i].second, texts[i])
        ->check(NumberCheck(0, 1, "probability from 0 to 1"));
  }
  loader.add_option("--delay", options->faults.delay, "Milliseconds before every answer")
      ->check(CLI::Range(0, 60000));
  loader.callback([&state, options] { RunLoader(state, *options); });
}

}  // namespace vexa
