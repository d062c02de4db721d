// wrb_soak: many agents, services that are stopped, killed and starved meanwhile, and a check of what is left.
#include <exception>
#include <random>

#include "CommandLine.h"
#include "Console.h"
#include "ExitCode.h"
#include "SoakRun.h"

namespace wrb::soak {
namespace {

int Main() {
    Options options;
    options.seed = std::random_device()();
    CLI::App app(
        "Runs commands of every kind against wrbhost and wrbback while these are stopped, killed, suspended and "
        "starved, and checks every answer and record. The registry must name FOLDER\\home as the home folder.",
        "wrb_soak");
    app.add_option("--folder", options.folder, "Folder to work in, with a copy of the sample home folder in it")
        ->required();
    app.add_option("--store-folder", options.storeFolder,
                   "Folder of the database, on a volume of at most 4 GiB that nothing else needs: it is filled "
                   "(default: FOLDER, whose volume is not filled)");
    app.add_option("--store", options.store,
                   "Database in place of a SQLite file in that folder: the address of an empty one")
        ->envname("WRB_STORE");
    app.add_option("--agents", options.agents, "The sample agents")->required();
    app.add_option("--commands", options.commands,
                   "Commands in all, but for a warm-up of 8000 at least (default: 100000)")
        ->check(CLI::Range(uint64_t{1000}, uint64_t{100'000'000}));
    app.add_option("--threads", options.threads, "Threads that send them (default: 8)")
        ->check(CLI::Range(1u, kChaosWorker));
    app.add_option("--seed", options.seed, "What the kinds of commands and the events follow (default: a random one)");
    app.add_option("--memory", options.memoryMiB, "MiB that each service may take (default: 256)")
        ->check(CLI::Range(16u, 65536u));
    app.add_flag("--calm", options.calm, "The services are stopped and started only");
    app.footer(
        "Example:\n"
        "  wrb_soak --folder work --agents samples/agents.json --commands 2000\n"
        "\n"
        "Exit codes: 0 passed, 1 failed, 2 wrong command line");
    if (const auto code = ParseArguments(app, Utf8Arguments())) {
        return *code;
    }
    return SoakRun(options).Run() ? kExitOk : kExitFailed;
}

}  // namespace
}  // namespace wrb::soak

int main() {
    try {
        return wrb::soak::Main();
    } catch (const std::exception& error) {
        wrb::PrintErr(std::string("wrb_soak: ") + error.what() + "\n");
        return wrb::kExitFailed;
    }
}
