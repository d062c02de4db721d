#include "Clock.h"

#include <windows.h>

#include <ctime>
#include <new>

namespace wrb {
namespace {

class CSystemClock final : public IClock {
  public:
    uint32_t TickMilliseconds() const override { return GetTickCount(); }
    int64_t CalendarSeconds() const override { return static_cast<int64_t>(std::time(nullptr)); }
};

}  // namespace

const IClock& SystemClock() {
    alignas(CSystemClock) static unsigned char storage[sizeof(CSystemClock)];
    static const CSystemClock* const clock = new (storage) CSystemClock;
    return *clock;
}

}  // namespace wrb
