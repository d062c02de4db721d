// The load: threads that each act as many agents, one command at a time, and judge every answer.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "Conversation.h"
#include "Latencies.h"
#include "Ledger.h"
#include "LoadRun.h"
#include "Packages.h"
#include "Presence.h"
#include "Questions.h"

namespace wrb::soak {

enum class Verdict : uint8_t {
    Right,
    Empty,         // an empty answer while the back end was away, or a change that it could not store
    NotDelivered,  // the host, or the service addressed, was away, or was killed before it answered
    Wrong,
    kCount
};

// What all threads share.
struct Field {
    Field(const std::wstring& folder, const std::wstring& protectionKey)
        : ledger(presence),
          questions(protectionKey),
          packages(folder + L"\\packages"),
          incoming(folder + L"\\incoming"),
          unpacked(folder + L"\\unpacked") {}

    Presence presence;
    Ledger ledger;
    CommandTally commands;
    Questions questions;
    Packages packages;
    const std::wstring incoming;  // where uploaded packages arrive
    const std::wstring unpacked;  // where the host is told to unpack them

    // Messages that the host read and must count as such, besides the commands that succeeded.
    std::atomic<uint64_t> refused{0};
    std::atomic<uint64_t> threw{0};
    std::atomic<uint64_t> feedbackRecords{0};  // at most so many are in the feedback log
    std::atomic<uint64_t> admitted{0};         // agents that may upload

    void NoteWrong(const std::wstring& what);
    std::vector<std::string> WrongNotes();  // the first few

  private:
    std::mutex m_lock;
    std::vector<std::string> m_wrong;
};

inline constexpr wchar_t kQueryCondition[] = L"Severity > 3";
inline constexpr int32_t kLongestWait = 600;  // seconds that an agent is told to wait before it uploads

// One thread of the load.
class Worker {
  public:
    Worker(Field& shared, unsigned thread, uint32_t seed) : field(shared), number(thread), m_random(seed + thread) {}

    using Marks = Presence::Marks;
    Marks MarksNow() const { return field.presence.Now(); }

    // `right` is looked at only when there is an answer.
    Verdict Judge(const Marks& since, const std::wstring& what, const Answer& answer, bool right) const;
    Verdict JudgeDelivery(const Marks& since, const std::wstring& what, bool delivered) const;
    Verdict Wrong(const std::wstring& what) const;

    uint32_t Random(uint32_t below) { return static_cast<uint32_t>(m_random() % below); }
    template <typename Range>
    const auto& Pick(const Range& range) {
        return range[Random(static_cast<uint32_t>(std::size(range)))];
    }

    // Of this run alone: 36 characters, and a number of this thread.
    std::wstring NewUid();
    uint32_t NewNumber() { return ++m_sequence; }

    // Copies a package to where uploads arrive.
    std::wstring Upload(const std::wstring& package);

    Field& field;
    const unsigned number;

  private:
    std::mt19937 m_random;
    uint32_t m_sequence = 0;
};

// The number of the worker that acts for the chaos; the load's threads have lower ones.
inline constexpr unsigned kChaosWorker = 64;

// The agent whose settings a thread changes.
std::wstring SettingAgent(unsigned thread);

struct Kind {
    const char* name;
    unsigned weight;  // of 1000
    Verdict (*run)(Worker& worker);
};

std::span<const Kind> Kinds();  // the order of the tally

Verdict AskScanSettings(Worker& worker);
Verdict AskBundle(Worker& worker);
Verdict AskFacts(Worker& worker);
Verdict AskAlerts(Worker& worker);
Verdict Echo(Worker& worker);
Verdict AskTicket(Worker& worker);
Verdict Report(Worker& worker);
Verdict ReportServerAuth(Worker& worker);
Verdict SendUnknown(Worker& worker);
Verdict SendHostileToHost(Worker& worker);
Verdict SendHostileToBackEnd(Worker& worker);
Verdict SendOversizedKey(Worker& worker);
Verdict SetAndGet(Worker& worker);
Verdict UploadFirewallLog(Worker& worker);
Verdict UploadBrokenPackage(Worker& worker);
Verdict UploadSpyware(Worker& worker);
Verdict ReportRestore(Worker& worker);

struct KindTally {
    std::array<std::atomic<uint64_t>, static_cast<std::size_t>(Verdict::kCount)> verdicts{};
    Latencies latencies;
};
using Tally = std::vector<KindTally>;

// Runs one command of a kind that the worker picks.
void RunOne(Worker& worker, Tally& tally);

}  // namespace wrb::soak
