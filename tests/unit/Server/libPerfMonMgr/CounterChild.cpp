// The second process of the counter test: counts as many calls as it is told, or takes the counters' mutex. With the
// mutex, or with a second argument, it then waits to be ended.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "CounterScope.h"
#include "PerfMonMgr.h"

namespace {

[[noreturn]] void WaitToBeEnded(const char* state) {
    std::puts(state);
    std::fflush(stdout);
    for (;;) {
        Sleep(INFINITE);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || !CWrbyPerfMonMgr::Initialize()) {
        return 1;
    }
    if (std::strcmp(argv[1], "hold") == 0) {
        WaitForSingleObject(CWrbyPerfMonMgr::GetInstance()->GetMutex(), INFINITE);
        WaitToBeEnded("holding");
    }
    for (int i = 0; i < std::atoi(argv[1]); ++i) {
        const wrb::CounterCall call(7);
    }
    if (argc > 2) {
        WaitToBeEnded("counted");
    }
    CWrbyPerfMonMgr::CloseSingleton();
    return 0;
}
