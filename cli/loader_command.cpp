// loader: the simulated receiver on a pseudo-terminal.
#include <atomic>
#include <csignal>
#include <cstdio>

#include "cli/receiver_commands.h"
#include "loader/run.h"
#include "serial/trace.h"

namespace vexa {

namespace {

std::atomic<bool> stopped{false};

struct LoaderOptions {
  std::string link, memory, log;
  LoaderFaults faults;
  LoaderRun run;
};

void SaveTo(CommandState& state, const Receiver& receiver, const std::string& folder) {
  if (folder.empty() || SaveMemory(receiver.memory, PathFromUtf8(folder))) return;
  Tell(state.context.messages, Icon::kStop, "Could not write the memory to \"%s\".", folder.c_str());
}

void RunLoader(CommandState& state, const LoaderOptions& options) {
  Trace log;
  if (!options.log.empty() && !log.Open(PathFromUtf8(options.log))) {
    Tell(state.context.messages, Icon::kStop, "Could not creat file \"%s\".", options.log.c_str());
    throw CommandFailed{};
  }
  const auto terminal = OpenPseudoTerminal(PathFromUtf8(options.link));
  if (!terminal) {
    Tell(state.context.messages, Icon::kStop, "A pseudo-terminal at \"%s\" cannot be made.",
         options.link.c_str());
    throw CommandFailed{};
  }
  LoaderMemory memory;
  if (!options.memory.empty()) memory = OpenMemory(PathFromUtf8(options.memory));
  Receiver receiver = MakeReceiver(options.faults, std::move(memory));
  receiver.note = [&log](const std::string& line) { log.Line(line); };
  receiver.stored = [&] { SaveTo(state, receiver, options.memory); };
  LoaderRun run = options.run;
  run.tap = [&log](bool from_pc, std::span<const uint8_t> bytes) { log.Bytes(from_pc, bytes); };
  run.stop = [] { return stopped.load(); };
  stopped = false;
  std::signal(SIGINT, [](int) { stopped = true; });
  std::signal(SIGTERM, [](int) { stopped = true; });
  std::fprintf(stderr, "Receiver at %s\n", terminal->path.c_str());
  RunReceiver(receiver, *terminal, run);
  SaveTo(state, receiver, options.memory);
}

}  // namespace

void AddLoaderCommand(CLI::App& program, CommandState& state) {
  const auto options = std::make_shared<LoaderOptions>();
  CLI::App& loader = *program.add_subcommand("loader", "A simulated receiver on a pseudo-terminal");
  loader.add_option("--link", options->link, "Path of the line's other end")->required();
  loader.add_option("--memory", options->memory, "Folder that keeps the memory between runs");
  loader.add_option("--log", options->log, "File for what crosses the line, both ways, with times");
  loader.add_flag("--once", options->run.once, "End after one session");
  loader.add_option("--baud", options->run.baud, "Pace both directions, bits a second")
      ->check(CLI::Range(1, 100000000));
  loader.add_option("--seed", options->faults.seed, "Repeats the same faults");
  const std::pair<const char*, double*> faults[] = {{"--nak", &options->faults.nak},
                                                    {"--corrupt", &options->faults.corrupt},
                                                    {"--drop", &options->faults.drop}};
  const char* texts[] = {"Probability that a good upload frame is refused",
                         "Probability of a flipped bit in a sent frame",
                         "Probability that a handshake byte is left out"};
  for (size_t i = 0; i < std::size(faults); ++i) {
    loader.add_option(faults[i].first, *faults[i].second, texts[i])->check(CLI::Range(0.0, 1.0));
  }
  loader.add_option("--delay", options->faults.delay, "Milliseconds before every answer")
      ->check(CLI::Range(0, 60000));
  loader.callback([&state, options] { RunLoader(state, *options); });
}

}  // namespace vexa
