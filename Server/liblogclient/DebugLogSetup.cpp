#include <memory>
#include <string>
#include <string_view>

#include "DebugLog.h"
#include "LastError.h"
#include "LoggerState.h"
#include "Text.h"

namespace {

constexpr std::size_t kTagBytes = 1024;
constexpr std::size_t kTagCharacters = 1023;
constexpr std::size_t kPathCharacters = 260;

template <typename Character>
std::basic_string<Character> Cut(const Character* text, std::size_t limit) {
    return std::basic_string<Character>(text == nullptr ? std::basic_string_view<Character>()
                                                        : std::basic_string_view<Character>(text).substr(0, limit));
}

}  // namespace

int DebugLogSetup(const wchar_t* debugIni, const wchar_t* debugLibrary, const char* moduleTag,
                  bool internalLogger) noexcept {
    const wrb::KeepLastError keep;
    try {
        std::shared_ptr<const wrb::ExternalLog> external;
        bool initialized = false;
        if (!internalLogger) {
            external = std::make_shared<const wrb::ExternalLog>(Cut(debugLibrary, kPathCharacters).c_str());
            // The library takes the path in the system's code page, in at most 260 bytes.
            const std::string ini = wrb::WideToAnsi(Cut(debugIni, kPathCharacters)).substr(0, kPathCharacters);
            initialized = external->Initialize(ini.c_str());
        }
        const std::wstring tag = wrb::AnsiToWide(Cut(moduleTag, kTagBytes)).substr(0, kTagCharacters);
        wrb::LoggerState::Shared().Replace([&](wrb::LoggerSetup& setup) {
            setup.moduleTag = tag;
            setup.internalLogger = internalLogger;
            setup.external = external;
        });
        return initialized ? 1 : 0;
    } catch (...) {  // out of memory: the settings stay as they were
        return 0;
    }
}

bool DebugLogAttachMirror(const wchar_t* path) noexcept {
    const wrb::KeepLastError keep;
    try {
        std::shared_ptr<const wrb::LogMirror> mirror;
        if (path != nullptr) {
            mirror = std::make_shared<const wrb::LogMirror>(path);
        }
        const bool failed = mirror != nullptr && !mirror->IsOpen();
        wrb::LoggerState::Shared().Replace([&](wrb::LoggerSetup& setup) { setup.mirror = failed ? nullptr : mirror; });
        return !failed;
    } catch (...) {
        return false;
    }
}
