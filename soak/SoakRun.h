// One soak from the seeding to the report: many agents, chaos meanwhile, a check afterwards of what is left.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Chaos.h"
#include "Operator.h"
#include "Report.h"
#include "Soak.h"
#include "StoreDisk.h"
#include "Watch.h"

namespace wrb::soak {

struct Options {
    std::string folder;
    std::string storeFolder;  // empty: `folder`
    std::string store;        // empty: a SQLite file there
    std::string agents;
    uint64_t commands = 100'000;
    unsigned threads = 8;
    uint32_t seed = 0;
    unsigned memoryMiB = 256;
    bool calm = false;
};

class SoakRun {
  public:
    explicit SoakRun(const Options& options);

    // Prints the page. True when nothing is wrong. Throws std::runtime_error when a program does not start or stop.
    bool Run();

  private:
    using Meanwhile = std::function<void(const LoadRun& load)>;

    void Seed() const;
    void Load(Result& result);
    void Round(const char* name, uint64_t commands, const Meanwhile& meanwhile);
    void Settle();
    uint64_t WarmUpAgain() const;  // commands
    std::string Progress() const;
    void CheckCounters(std::vector<std::string>& faults) const;
    void CheckTotals(std::vector<std::string>& faults) const;
    uint64_t CheckWhatIsLeft(std::vector<std::string>& faults) const;

    const Options m_options;
    const std::wstring m_folder;
    const std::wstring m_storeFolder;
    const std::wstring m_database;  // its address
    std::unique_ptr<Field> m_field;
    std::unique_ptr<Operator> m_services;
    std::unique_ptr<StoreDisk> m_disk;
    std::unique_ptr<Chaos> m_chaos;
    std::vector<Worker> m_workers;
    Tally m_tally;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

}  // namespace wrb::soak
