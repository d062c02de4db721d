// The INI cache and the policy cache over it: reads of both kinds, writes, a change of file, expiry and clearing at
// once.
#include <atomic>

#include "BmPolicyCache.h"
#include "INICache.h"
#include "Threads.h"

namespace {

class CountingProfile final : public wrb::IProfileAccess {
  public:
    bool FileExists(const char*) override { return true; }
    uint32_t ReadInt(const char*, const char*, int32_t, const char*) override { return m_value; }
    std::string ReadString(const char*, const char*, const char*, const char*) override {
        return std::to_string(m_value);
    }
    std::optional<std::string> ReadSection(const char*, const char*) override { return std::to_string(m_value); }
    int WriteString(const char*, const char*, const char*, const char*, uint32_t&) override {
        ++m_value;
        return 1;
    }
    void Pause(uint32_t) override {}

  private:
    std::atomic<uint32_t> m_value{1};
};

void UseCache(CINICache& cache, int thread, int round) {
    char text[32];
    const std::string key = "Key" + std::to_string(round % 7);
    cache.readINIInt("Section", key.c_str(), 1);
    std::wstring lines;
    cache.readINISection(lines, L"Section");
    cache.readINIString(text, "Section", key.c_str(), "", sizeof text);
    if (round % 50 == thread) {
        cache.writeINIInt("Section", key.c_str(), round);
    } else if (round % 200 == 100 + thread) {
        cache.init(round % 400 < 200 ? "first.ini" : "second.ini", 1);
    } else if (round % 500 == 250 + thread) {
        cache.clear();
    }
}

}  // namespace

int main() {
    CountingProfile profile;
    CINICache cache(wrb::SystemClock(), profile);
    OnThreads([&cache](int thread, int round) { UseCache(cache, thread, round); });

    const wrb::BmPolicyCache policies;
    OnThreads([&policies](int, int) { policies.Policies(); });
}
