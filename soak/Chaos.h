// What the machine and the neighbours do to the services: one event after the other, in an order that the seed gives,
// while the load goes on.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "ClockStep.h"
#include "LoadRun.h"
#include "Operator.h"
#include "Soak.h"
#include "StoreDisk.h"

namespace wrb::soak {

class Chaos {
  public:
    struct Plan {
        uint32_t seed = 0;
        bool calm = false;  // only orderly stops
        std::wstring database;
    };

    Chaos(Operator& services, Field& field, StoreDisk& disk, const Plan& plan);

    // Until the load is over. Throws std::runtime_error when a service does not come back.
    void Run(const LoadRun& load);

    // How often each event has happened, and why not.
    struct Count {
        const char* name;
        unsigned times;
        const char* whyNot;  // null: it can happen
    };
    std::vector<Count> Counts() const;

  private:
    struct Event;
    static const Event kEvents[];

    unsigned Number(unsigned least, unsigned most);
    void Last(unsigned most);
    const char* WhyNot(const Event& event) const;

    void StopBackEnd();
    void StopHost();
    void KillBackEnd();
    void KillHost();
    void SuspendBackEnd();
    void SuspendHost();
    void HangLog();
    void HoldLogConnections();
    void HoldMutex();
    void AbandonMutex();
    void FillDisk();
    void StepClock();

    bool StoresAgain();
    bool AdmitsAgain(uint64_t before);

    Operator& m_services;
    Field& m_field;
    StoreDisk& m_disk;
    const Plan m_plan;
    ClockStep m_clock;
    std::mt19937 m_random;
    std::vector<unsigned> m_times;
    bool m_hasLosses = false;  // the back end has counted rows as lost, and tells so only when it is stopped
    Worker m_worker;
};

}  // namespace wrb::soak
