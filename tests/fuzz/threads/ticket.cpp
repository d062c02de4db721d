// The lists of the upload ticket: requests and releases of few clients, while the clock moves.
#include <atomic>

#include "Threads.h"
#include "cmdhl_LogTicket.h"

namespace {

class FastClock final : public wrb::IClock {
  public:
    uint32_t TickMilliseconds() const override { return 0; }
    uint64_t MonotonicMicroseconds() const override { return 0; }
    int64_t MonotonicSeconds() const override { return ++m_seconds; }
    int64_t CalendarSeconds() const override { return 0; }

  private:
    mutable std::atomic<int64_t> m_seconds{1};
};

// The ticket is in force, and few clients fit.
class SmallLimits final : public wrb::IProfileAccess {
  public:
    bool FileExists(const char*) override { return true; }
    uint32_t ReadInt(const char*, const char*, int32_t, const char*) override { return 1; }
    std::string ReadString(const char*, const char*, const char*, const char*) override { return "1"; }
    std::optional<std::string> ReadSection(const char*, const char*) override { return ""; }
    int WriteString(const char*, const char*, const char*, const char*, uint32_t&) override { return 1; }
    void Pause(uint32_t) override {}
};

}  // namespace

int main() {
    const FastClock clock;
    SmallLimits limits;
    CINICache scanIni(clock, limits);
    CINICache serverIni(clock, limits);
    wrb::LogTicket ticket(clock, scanIni, serverIni);
    OnThreads([&ticket](int thread, int round) {
        const std::wstring uid = L"client" + std::to_wstring((thread + round) % 9);
        if (round % 3 == 0) {
            ticket.Release(uid);
        } else {
            ticket.Request(uid);
        }
    });
}
