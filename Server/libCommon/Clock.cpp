#include "Clock.h"

#include <windows.h>

#include <chrono>
#include <new>

namespace wrb {
namespace {

class TickClock final : public IClock {
  public:
    uint32_t TickMilliseconds() const override { return GetTickCount(); }
    uint64_t MonotonicMicroseconds() const override {
        using namespace std::chrono;
        return static_cast<uint64_t>(floor<microseconds>(steady_clock::now()).time_since_epoch().count());
    }
    int64_t MonotonicSeconds() const override { return static_cast<int64_t>(GetTickCount64() / 1000); }
    // The runtime's own time() costs microseconds under Wine.
    int64_t CalendarSeconds() const override {
        return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()).time_since_epoch().count();
    }
};

}  // namespace

const IClock& SystemClock() {
    alignas(TickClock) static unsigned char storage[sizeof(TickClock)];
    static const TickClock* const clock = new (storage) TickClock;
    return *clock;
}

}  // namespace wrb
