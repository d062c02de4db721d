#include "Clock.h"

#include <windows.h>

#include <chrono>
#include <new>

namespace wrb {
namespace {

class CSystemClock final : public IClock {
  public:
    uint32_t TickMilliseconds() const override { return GetTickCount(); }
    // The runtime's own time() costs microseconds under Wine.
    int64_t CalendarSeconds() const override {
        return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()).time_since_epoch().count();
    }
};

}  // namespace

const IClock& SystemClock() {
    alignas(CSystemClock) static unsigned char storage[sizeof(CSystemClock)];
    static const CSystemClock* const clock = new (storage) CSystemClock;
    return *clock;
}

}  // namespace wrb
