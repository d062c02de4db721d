// Prints the handles and the KiB of private memory of each process whose id is an argument: "312 10240", a line each.
#include <windows.h>

#include <cstdio>
#include <cstdlib>

#include "Handle.h"
#include "ResourceUse.h"

int main(int count, char** values) {
    for (int i = 1; i < count; ++i) {
        const auto id = static_cast<DWORD>(std::strtoul(values[i], nullptr, 10));
        const wrb::KernelHandle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, id));
        if (!process) {
            std::fprintf(stderr, "no process %s\n", values[i]);
            return 1;
        }
        const wrb::test::ResourceUse use = wrb::test::CurrentResourceUse(process.Get());
        std::printf("%u %llu\n", use.handles, static_cast<unsigned long long>(use.committedBytes / 1024));
    }
    return 0;
}
