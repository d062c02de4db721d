#include "Watch.h"

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "Console.h"
#include "Text.h"

namespace wrb::soak {
namespace {

constexpr DWORD kEchoMilliseconds = 100;
constexpr DWORD kLookMilliseconds = 1'000;
constexpr unsigned kLooksOfALine = 5;
constexpr uint64_t kSlowestEcho = 2'000'000;  // microseconds

}  // namespace

Watch::Watch(Field& field, std::vector<Peak> peaks, std::function<std::string()> progress)
    : m_field(field),
      m_peaks(std::move(peaks)),
      m_progress(std::move(progress)),
      m_echoing([this](const std::stop_token& stop) { EchoOn(stop); }),
      m_looking([this](const std::stop_token& stop) { LookOn(stop); }) {}

void Watch::Stop() {
    for (std::jthread* thread : {&m_echoing, &m_looking}) {
        thread->request_stop();
    }
    for (std::jthread* thread : {&m_echoing, &m_looking}) {
        thread->join();
    }
}

void Watch::EchoOn(const std::stop_token& stop) {
    for (unsigned number = 0; !stop.stop_requested(); ++number) {
        Echo(number);
        Sleep(kEchoMilliseconds);
    }
}

// An echo counts when the host ran from its first to its last moment.
void Watch::Echo(unsigned number) {
    const std::wstring text = FormatWide(L"echo %u", number);
    const PresenceLog::Mark mark = m_field.presence.hostRuns.Now();
    const auto start = std::chrono::steady_clock::now();
    const Answer answer = Ask(m_field.commands, L"CMDHL_ECHO", {text});
    const std::chrono::duration<double, std::micro> elapsed = std::chrono::steady_clock::now() - start;
    if (!m_field.presence.hostRuns.Undisturbed(mark)) {
        return;
    }
    const auto microseconds = static_cast<uint64_t>(elapsed.count());
    m_echoes.Add(microseconds);
    if (answer.text != text || microseconds > kSlowestEcho) {
        m_field.NoteWrong(FormatWide(L"echo %u: %s after %u ms", number, answer.answered ? L"answered" : L"no answer",
                                     static_cast<unsigned>(microseconds / 1'000)));
    }
}

void Watch::LookOn(const std::stop_token& stop) {
    for (unsigned look = 1; !stop.stop_requested(); ++look) {
        std::ranges::for_each(m_peaks, [this](Peak& peak) { Look(peak); });
        if (look % kLooksOfALine == 0) {
            PrintOut(m_progress());
        }
        Sleep(kLookMilliseconds);
    }
}

void Watch::Look(Peak& peak) {
    const std::optional<test::ResourceUse> use = peak.service->Use();
    if (!use) {
        return;
    }
    ++peak.looks;
    if (peak.bytes <= peak.ceiling && use->committedBytes > peak.ceiling) {
        m_field.NoteWrong(FormatWide(L"%S takes %u MiB, more than it may", peak.program,
                                     static_cast<unsigned>(use->committedBytes >> 20)));
    }
    peak.bytes = std::max<uint64_t>(peak.bytes, use->committedBytes);
    peak.handles = std::max(peak.handles, use->handles);
}

}  // namespace wrb::soak
