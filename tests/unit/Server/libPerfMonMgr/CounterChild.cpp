// The second process of the counter test: counts calls, or takes the counters' mutex and waits to be ended.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "CounterScope.h"
#include "PerfMonMgr.h"

int main(int argc, char** argv) {
    if (argc < 2 || !CWrbyPerfMonMgr::Initialize()) {
        return 1;
    }
    if (std::strcmp(argv[1], "hold") == 0) {
        WaitForSingleObject(CWrbyPerfMonMgr::GetInstance()->GetMutex(), INFINITE);
        std::puts("holding");
        std::fflush(stdout);
        Sleep(INFINITE);
    }
    for (int i = 0; i < std::atoi(argv[1]); ++i) {
        const wrb::CounterCall call(7);
    }
    CWrbyPerfMonMgr::CloseSingleton();
    return 0;
}
