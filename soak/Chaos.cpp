#include "Chaos.h"

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <thread>

#include "Console.h"
#include "HandlerCounterBlock.h"
#include "HungPipe.h"
#include "Ledger.h"
#include "NamedMutex.h"
#include "ServicePipes.h"
#include "Suspension.h"

namespace wrb::soak {
namespace {

constexpr unsigned kShortestPause = 200;  // milliseconds between two events
constexpr unsigned kLongestPause = 2'000;
constexpr unsigned kShortestEvent = 100;
constexpr unsigned kLongestAway = 1'500;      // of a service that starts again
constexpr unsigned kLongestFault = 4'000;     // of everything that ends by itself
constexpr DWORD kMutexMilliseconds = 10'000;  // more than anybody holds the counters' mutex
constexpr ULONGLONG kComesBackMilliseconds = 60'000;
constexpr ULONGLONG kAdmitsMilliseconds = 20'000;
constexpr DWORD kLookMilliseconds = 50;

constexpr int64_t kSteps[] = {-86'400, -3'600, -10, 10, 3'600, 86'400};  // seconds

// Until the condition holds; false when the time is up.
template <typename Condition>
bool WaitUntil(ULONGLONG milliseconds, Condition holds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (!holds()) {
        if (GetTickCount64() > end) {
            return false;
        }
        Sleep(kLookMilliseconds);
    }
    return true;
}

}  // namespace

struct Chaos::Event {
    const char* name;
    void (Chaos::*run)();
    bool orderly;
};

const Chaos::Event Chaos::kEvents[] = {
    {"back end stopped, started", &Chaos::StopBackEnd, true},
    {"host stopped, started", &Chaos::StopHost, true},
    {"back end killed", &Chaos::KillBackEnd, false},
    {"host killed", &Chaos::KillHost, false},
    {"back end suspended", &Chaos::SuspendBackEnd, false},
    {"host suspended", &Chaos::SuspendHost, false},
    {"log service hung", &Chaos::HangLog, false},
    {"log connections held", &Chaos::HoldLogConnections, false},
    {"counters' mutex held", &Chaos::HoldMutex, false},
    {"its owner ended", &Chaos::AbandonMutex, false},
    {"store's disk full", &Chaos::FillDisk, false},
    {"clock stepped", &Chaos::StepClock, false},
};

Chaos::Chaos(Operator& services, Field& field, StoreDisk& disk, const Plan& plan)
    : m_services(services),
      m_field(field),
      m_disk(disk),
      m_plan(plan),
      m_random(plan.seed),
      m_times(std::size(kEvents)),
      m_worker(field, kChaosWorker, plan.seed) {}

unsigned Chaos::Number(unsigned least, unsigned most) {
    return least + static_cast<unsigned>(m_random() % (most - least + 1));
}

void Chaos::Last(unsigned most) {
    Sleep(Number(kShortestEvent, most));
}

const char* Chaos::WhyNot(const Event& event) const {
    if (m_plan.calm && !event.orderly) {
        return "left out (--calm)";
    }
    return event.run == &Chaos::FillDisk && !m_disk.CanBeFilled() ? "skipped: the store has no small volume of its own"
                                                                  : nullptr;
}

// Each event comes once before one comes twice.
void Chaos::Run(const LoadRun& load) {
    std::vector<std::size_t> order;
    while (!load.IsOver()) {
        if (order.empty()) {
            order.resize(std::size(kEvents));
            std::iota(order.begin(), order.end(), std::size_t{0});
            std::erase_if(order, [this](std::size_t event) { return WhyNot(kEvents[event]) != nullptr; });
            std::ranges::shuffle(order, m_random);
        }
        Sleep(Number(kShortestPause, kLongestPause));
        const Event& event = kEvents[order.back()];
        PrintOut(std::string("chaos: ") + event.name + "\n");
        (this->*event.run)();
        ++m_times[order.back()];
        order.pop_back();
    }
}

std::vector<Chaos::Count> Chaos::Counts() const {
    std::vector<Count> counts;
    for (std::size_t i = 0; i < std::size(kEvents); ++i) {
        counts.push_back({kEvents[i].name, m_times[i], WhyNot(kEvents[i])});
    }
    return counts;
}

void Chaos::StopBackEnd() {
    m_services.StopBackEnd();
    m_hasLosses = false;
    Last(kLongestAway);
    m_services.StartBackEnd();
}

void Chaos::StopHost() {
    m_services.StopHost();
    Last(kLongestAway);
    m_services.StartHost();
}

void Chaos::KillBackEnd() {
    if (m_hasLosses) {
        StopBackEnd();
    }
    m_services.KillBackEnd();
    Last(kLongestAway);
    m_services.StartBackEnd();
}

void Chaos::KillHost() {
    m_services.KillHost();
    Last(kLongestAway);
    m_services.StartHost();
}

// Everybody waits, and then gets the right answer.
void Chaos::SuspendBackEnd() {
    const Suspension suspension(m_services.BackEnd().ProcessId());
    Last(kLongestFault);
}

void Chaos::SuspendHost() {
    m_field.presence.hostRuns.Leaves();
    {
        const Suspension suspension(m_services.Host().ProcessId());
        Last(kLongestFault);
    }
    m_field.presence.hostRuns.IsBack();
}

// The log service is a part of the back end, so its name is free only while that is away.
void Chaos::HangLog() {
    m_services.StopBackEnd();
    m_hasLosses = false;
    {
        const HungPipe log(kLogServicePipe);
        Last(kLongestFault);
    }
    m_services.StartBackEnd();
}

void Chaos::HoldLogConnections() {
    SilentClients clients(kLogServicePipe);
    WaitUntil(Number(kShortestEvent, kLongestFault), [&] {
        clients.TakeFreeConnections();
        return false;
    });
}

void Chaos::HoldMutex() {
    const KernelHandle mutex = OpenNamedMutex(kCounterMutexName);
    const NamedMutexLock lock(mutex.Get(), kMutexMilliseconds);
    Last(kLongestFault);
}

void Chaos::AbandonMutex() {
    const KernelHandle mutex = OpenNamedMutex(kCounterMutexName);
    std::thread([&] {
        WaitForSingleObject(mutex.Get(), kMutexMilliseconds);
        Last(kLongestAway);
    }).join();
}

void Chaos::FillDisk() {
    m_field.ledger.Begin(Cut::Full, m_field.presence.store);
    const ULONGLONG end = GetTickCount64() + Number(kLongestAway, kLongestFault);
    while (GetTickCount64() < end) {
        m_disk.Fill();
        Sleep(kLookMilliseconds);
    }
    m_disk.Release();
    m_hasLosses = true;
    if (!WaitUntil(kComesBackMilliseconds, [this] { return StoresAgain(); })) {
        m_field.NoteWrong(L"the back end stores no rows a minute after its disk had room again");
    }
    m_field.presence.store.IsBack();
}

bool Chaos::StoresAgain() {
    const std::wstring uid = m_worker.NewUid();
    const Presence::Marks marks = m_field.presence.Now();
    if (Ask(m_field.commands, L"CMDHL_SET_SPYWARE_RESTORE_LOG", {uid, L"1", L"2"}).text == L"1") {
        m_field.ledger.RestoreAnswered(uid, marks);
    }
    return WaitUntil(2'000, [&] { return HasRestoreRow(m_plan.database, uid); });
}

void Chaos::StepClock() {
    m_clock.Step(kSteps[Number(0, std::size(kSteps) - 1)]);
    const uint64_t before = m_field.admitted;
    if (!WaitUntil(kAdmitsMilliseconds, [&] { return m_field.admitted != before; })) {
        m_field.NoteWrong(L"no agent is admitted to upload after the clock was stepped");
    }
}

}  // namespace wrb::soak
