// Firewall alerts: counts what agents report, and tells the administrator when a threshold is reached.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "AlertEvent.h"
#include "AlertSettings.h"
#include "AlertWindow.h"
#include "Clock.h"
#include "LiveState.h"

namespace wrb {

// Any thread. Nobody waits for a mail server: a mail is only stored, in the home folder of that moment (MailFolder.h).
class AlertNotifier {
  public:
    using EventWriter = std::function<uint32_t(const AlertEvent&)>;  // as WriteAlertEvent

    using Publisher = std::function<void(const LiveAlerts&)>;  // of the sums after each report

    // `caller` begins the log lines. Everything must outlive the notifier.
    AlertNotifier(const wchar_t* caller, const IClock& clock, CINICache& scanIni, EventWriter writeEvent,
                  Publisher publish = nullptr)
        : m_caller(caller),
          m_clock(clock),
          m_settings(scanIni),
          m_window(clock),
          m_writeEvent(std::move(writeEvent)),
          m_publish(std::move(publish)) {}

    // The sums of the window; nothing while alerts are off. `timeStamp` is an agent's text: it shows when it is 14
    // digits, YYYYMMDDHHMMSS. Logs what fails.
    std::optional<AlertSums> Add(const AlertCounts& counts, const wchar_t* timeStamp);

  private:
    void Notify(const AlertState& state, const AlertLimits& limits, const std::wstring& timeStamp);
    void StoreMail(const AlertState& state, const AlertLimits& limits, const std::wstring& timeStamp);

    const wchar_t* const m_caller;
    const IClock& m_clock;
    const AlertSettings m_settings;
    AlertWindow m_window;
    const EventWriter m_writeEvent;
    const Publisher m_publish;
};

}  // namespace wrb
