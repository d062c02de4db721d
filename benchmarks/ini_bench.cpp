#include <windows.h>

#include <fstream>
#include <map>
#include <string>

#include "Allocations.h"
#include "INICache.h"
#include "Ratio.h"
#include "SRWLock.h"

namespace wrb::bench {
namespace {

constexpr int kKeys = 40;
constexpr char kSection[] = "Manual Scan Configuration";
constexpr char kKey[] = "CompressedLayer20";
constexpr wchar_t kWideSection[] = L"Manual Scan Configuration";
constexpr wchar_t kWideKey[] = L"CompressedLayer20";
constexpr uint32_t kExpirySeconds = 86400;  // no refresh falls into the measurement

const std::string& IniPath() {
    static const std::string path = [] {
        char folder[MAX_PATH];
        GetTempPathA(MAX_PATH, folder);
        std::string name = std::string(folder) + "wrb_bench.ini";
        std::ofstream file(name, std::ios::binary);
        file << "[" << kSection << "]\r\n";
        for (int i = 0; i < kKeys; ++i) {
            file << "CompressedLayer" << i << "=" << i << "\r\n";
        }
        return name;
    }();
    return path;
}

CINICache& Cache() {
    static CINICache cache;
    static const bool filled = [] {
        cache.init(IniPath().c_str(), kExpirySeconds);
        for (int i = 0; i < kKeys; ++i) {
            cache.readINIInt(kSection, ("CompressedLayer" + std::to_string(i)).c_str(), 0);
        }
        return true;
    }();
    static_cast<void>(filled);
    return cache;
}

void CachedNarrow(benchmark::State& state) {
    CINICache& cache = Cache();
    const AllocationCounter counter(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(cache.readINIInt(kSection, kKey, 0));
    }
}

void CachedWide(benchmark::State& state) {
    CINICache& cache = Cache();
    const AllocationCounter counter(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(cache.readINIInt(kWideSection, kWideKey, 0));
    }
}

void DirectRead(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(GetPrivateProfileIntA(kSection, kKey, 0, IniPath().c_str()));
    }
}

void BareLookUp(benchmark::State& state) {
    static CWrbSRWLock lock;
    static const std::map<std::string, uint32_t> values = [] {
        std::map<std::string, uint32_t> map;
        for (int i = 0; i < kKeys; ++i) {
            map[std::string(kSection) + ":CompressedLayer" + std::to_string(i)] = static_cast<uint32_t>(i);
        }
        return map;
    }();
    const std::string key = std::string(kSection) + ":" + kKey;
    for (auto _ : state) {
        const SharedGuard guard(lock);
        benchmark::DoNotOptimize(values.find(key)->second);
    }
}

}  // namespace

void AddIniBenchmarks() {
    AddRatio("INI number, cached", CachedNarrow, "direct profile read", DirectRead, Goal::FasterBy, 500);
    AddRatio("INI number, cached (narrow)", CachedNarrow, "map look-up under the lock", BareLookUp, Goal::AtMost, 3,
             {1, 2});
    AddRatio("INI number, cached (wide)", CachedWide, "map look-up under a lock", BareLookUp, Goal::AtMost, 3, {1, 2});
}

}  // namespace wrb::bench
