#include "Soak.h"

#include <windows.h>

#include <chrono>
#include <filesystem>
#include <numeric>

#include "Text.h"

namespace wrb::soak {
namespace {

constexpr std::size_t kMostNotes = 10;
constexpr std::size_t kShownCharacters = 300;
constexpr DWORD kAwayMilliseconds = 100;  // between two tries of a thread whose service is away

constexpr Kind kKinds[] = {
    {"scan settings", 308, AskScanSettings},
    {"setting bundles", 120, AskBundle},
    {"facts of agents", 50, AskFacts},
    {"alert texts", 60, AskAlerts},
    {"echo", 100, Echo},
    {"upload ticket", 60, AskTicket},
    {"set, then get", 100, SetAndGet},
    {"reports without an answer", 60, Report},
    {"server-authentication logs", 10, ReportServerAuth},
    {"firewall upload", 30, UploadFirewallLog},
    {"firewall upload, broken", 10, UploadBrokenPackage},
    {"spyware upload", 20, UploadSpyware},
    {"restore result", 20, ReportRestore},
    {"unknown command", 20, SendUnknown},
    {"hostile, to the host", 20, SendHostileToHost},
    {"hostile, to the services", 10, SendHostileToBackEnd},
    {"oversized keys", 2, SendOversizedKey},
};

std::size_t PickKind(Worker& worker) {
    static const unsigned all = std::accumulate(std::begin(kKinds), std::end(kKinds), 0u,
                                                [](unsigned sum, const Kind& kind) { return sum + kind.weight; });
    unsigned at = worker.Random(all);
    std::size_t kind = 0;
    while (at >= kKinds[kind].weight) {
        at -= kKinds[kind++].weight;
    }
    return kind;
}

}  // namespace

std::span<const Kind> Kinds() {
    return kKinds;
}

void Field::NoteWrong(const std::wstring& what) {
    const std::lock_guard lock(m_lock);
    if (m_wrong.size() < kMostNotes) {
        m_wrong.push_back(WideToUtf8(what.substr(0, kShownCharacters)));
    }
}

std::vector<std::string> Field::WrongNotes() {
    const std::lock_guard lock(m_lock);
    return m_wrong;
}

Verdict Worker::Judge(const Marks& since, const std::wstring& what, const Answer& answer, bool right) const {
    if (!answer.delivered) {
        return JudgeDelivery(since, what, false);
    }
    if (answer.answered && right) {
        return Verdict::Right;
    }
    if (!field.presence.HostStayed(since)) {
        return Verdict::NotDelivered;
    }
    if (!answer.answered) {
        return Wrong(what + L": no answer in a minute");
    }
    if (answer.text.empty() && !field.presence.BackEndStayed(since)) {
        return Verdict::Empty;
    }
    return Wrong(what + L": answered " + answer.text);
}

Verdict Worker::JudgeDelivery(const Marks& since, const std::wstring& what, bool delivered) const {
    if (delivered) {
        return Verdict::Right;
    }
    return field.presence.HostStayed(since) ? Wrong(what + L": could not be sent") : Verdict::NotDelivered;
}

Verdict Worker::Wrong(const std::wstring& what) const {
    field.NoteWrong(what);
    return Verdict::Wrong;
}

std::wstring Worker::NewUid() {
    return FormatWide(L"50a40000-0000-4000-%04x-%012x", number, NewNumber());
}

std::wstring Worker::Upload(const std::wstring& package) {
    std::wstring path = FormatWide(L"%s\\%u-%u.cab", field.incoming.c_str(), number, NewNumber());
    std::filesystem::copy_file(package, path);
    return path;
}

std::wstring SettingAgent(unsigned thread) {
    return FormatWide(L"50a40000-0000-4000-8000-%012x", thread);
}

void RunOne(Worker& worker, Tally& tally) {
    const std::size_t kind = PickKind(worker);
    const auto start = std::chrono::steady_clock::now();
    const Verdict verdict = kKinds[kind].run(worker);
    const std::chrono::duration<double, std::micro> elapsed = std::chrono::steady_clock::now() - start;
    ++tally[kind].verdicts[static_cast<std::size_t>(verdict)];
    tally[kind].latencies.Add(static_cast<uint64_t>(elapsed.count()));
    if (verdict == Verdict::NotDelivered) {
        Sleep(kAwayMilliseconds);
    }
}

}  // namespace wrb::soak
