#include "AlertNotifier.h"

#include <algorithm>
#include <cwchar>
#include <string_view>

#include "DebugLog.h"
#include "HomeFolder.h"
#include "MailFolder.h"
#include "MailText.h"
#include "SystemText.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr const wchar_t* kNames[kAlertCounts] = {L"intrusions", L"firewall rules", L"total"};
constexpr std::size_t kStampDigits = 14;

// "2024-01-31 23:59:59", or that there is none.
std::wstring ShownTime(const wchar_t* timeStamp) {
    const std::wstring digits(timeStamp, wcsnlen(timeStamp, kStampDigits + 1));
    const auto isDigit = [](wchar_t c) { return c >= L'0' && c <= L'9'; };
    if (digits.size() != kStampDigits || !std::ranges::all_of(digits, isDigit)) {
        return L"(none)";
    }
    const auto part = [&digits](std::size_t at, std::size_t count) { return digits.substr(at, count); };
    return part(0, 4) + L"-" + part(4, 2) + L"-" + part(6, 2) + L" " + part(8, 2) + L":" + part(10, 2) + L":" +
           part(12, 2);
}

// What `describe` makes of each count for which `wanted` is true, with `separator` between.
template <typename Wanted, typename Describe>
std::wstring Join(const wchar_t* separator, Wanted wanted, Describe describe) {
    std::wstring text;
    for (std::size_t i = 0; i < kAlertCounts; ++i) {
        if (wanted(i)) {
            text += (text.empty() ? L"" : separator) + describe(i);
        }
    }
    return text;
}

// "intrusions 120 (threshold 100)"
std::wstring Sum(const AlertState& state, const AlertLimits& limits, std::size_t i) {
    std::wstring text = std::wstring(kNames[i]) + L" " + std::to_wstring(state.sums.counts[i]);
    if (limits.thresholds[i] != 0) {
        text += L" (threshold " + std::to_wstring(limits.thresholds[i]) + L")";
    }
    return text;
}

}  // namespace

std::optional<AlertSums> AlertNotifier::Add(const AlertCounts& counts, const wchar_t* timeStamp) {
    if (!m_settings.IsEnabled()) {
        return std::nullopt;
    }
    const AlertLimits limits = m_settings.Limits();
    const AlertState state = m_window.Add(counts, limits);
    if (m_publish) {
        m_publish({m_clock.CalendarSeconds(), state.sums.reports, limits.windowSeconds, limits.thresholds,
                   state.sums.counts});
    }
    if (state.reached.any()) {
        Notify(state, limits, ShownTime(timeStamp));
    }
    return state.sums;
}

void AlertNotifier::Notify(const AlertState& state, const AlertLimits& limits, const std::wstring& timeStamp) {
    if (m_settings.WritesEvents()) {
        const auto reached = [&state](std::size_t i) { return state.reached[i]; };
        const AlertEvent event{std::to_wstring(limits.windowSeconds),
                               Join(L", ", reached, [&](std::size_t i) { return Sum(state, limits, i); }), timeStamp};
        if (const uint32_t error = m_writeEvent(event); error != 0) {
            WRB_LOG(kLogError, L"%s - cannot write the event of a firewall alert: %s", m_caller,
                    WideSystemText(error).c_str());
        }
    }
    if (m_settings.SendsMail()) {
        StoreMail(state, limits, timeStamp);
    }
}

void AlertNotifier::StoreMail(const AlertState& state, const AlertLimits& limits, const std::wstring& timeStamp) {
    const std::vector<std::string> to = m_settings.MailTo();
    if (to.empty()) {
        if (m_window.TakeNote(limits.windowSeconds)) {
            WRB_LOG(kLogError, L"%s - no mail of firewall alerts: [Firewall Alert] MailTo has no valid address",
                    m_caller);
        }
        return;
    }
    const auto reached = [&state](std::size_t i) { return state.reached[i]; };
    const auto all = [](std::size_t) { return true; };
    const std::wstring computer = ComputerName();
    const int64_t now = m_clock.CalendarSeconds();
    const std::wstring name = MailFolder::NewName(now);
    const std::wstring sums = Join(L"\n", all, [&](std::size_t i) {
        return L"  " + Sum(state, limits, i) + (state.reached[i] ? L", reached" : L"");
    });
    const std::wstring names = Join(L", ", reached, [](std::size_t i) { return std::wstring(kNames[i]); });
    const Mail mail{WideToUtf8(name),
                    now,
                    m_settings.MailFrom(),
                    to,
                    L"Firewall alert on " + computer + L": " + names,
                    L"The firewalls of the agents have reported to " + computer + L" within " +
                        std::to_wstring(limits.windowSeconds) + L" seconds:\n\n" + sums +
                        L"\n\nThe last report has the time stamp " + timeStamp +
                        L".\n\nThe next mail about the same threshold comes when as many seconds have passed, at the "
                        L"earliest.\n"};
    if (const uint32_t error = MailFolder(HomeFolder()).Store(name, MailText(mail)); error != 0) {
        WRB_LOG(kLogError, L"%s - cannot store the mail of a firewall alert: %s", m_caller,
                WideSystemText(error).c_str());
    }
}

}  // namespace wrb
