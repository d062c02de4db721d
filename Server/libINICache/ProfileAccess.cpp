#include "ProfileAccess.h"

#include <windows.h>

#include "CancelAfter.h"
#include "ReadableFile.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr DWORD kShortValue = 2048;
constexpr DWORD kLongestValue = 65536;
constexpr uint32_t kFileMilliseconds = 2'000;

bool BeginsLikeANumber(const char* text) {
    while (*text == ' ' || *text == '\t') {
        ++text;
    }
    if (*text == '-' || *text == '+') {
        ++text;
    }
    return *text >= '0' && *text <= '9';
}

class ProfileApi final : public IProfileAccess {
  public:
    bool FileExists(const char* path) override {
        const DWORD attributes = GetFileAttributesA(path);
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    }

    uint32_t WhileReadable(const char* path, const std::function<void()>& read) override {
        return wrb::WhileReadable(AnsiToWide(path), kFileMilliseconds, read);
    }

    uint32_t ReadInt(const char* section, const char* key, int32_t defaultValue, const char* path) override {
        const UINT value = GetPrivateProfileIntA(section, key, defaultValue, path);
        if (value != 0 || defaultValue == 0) {
            return value;
        }
        // The system answers 0 for a text that is no number, and the default only for a missing or empty one.
        char text[32];
        const DWORD length = GetPrivateProfileStringA(section, key, "", text, sizeof text, path);
        return length == 0 || !BeginsLikeANumber(text) ? static_cast<uint32_t>(defaultValue) : value;
    }

    std::string ReadString(const char* section, const char* key, const char* defaultText, const char* path) override {
        char text[kShortValue];
        const DWORD length = GetPrivateProfileStringA(section, key, defaultText, text, kShortValue, path);
        if (length < kShortValue - 1) {
            return std::string(text, length);
        }
        std::string value(kLongestValue, '\0');
        value.resize(GetPrivateProfileStringA(section, key, defaultText, value.data(), kLongestValue, path));
        return value;
    }

    std::optional<std::string> ReadSection(const char* section, const char* path) override {
        // A section that does not fit is cut to the capacity less 2, which must be more than the longest section.
        constexpr DWORD kCapacity = kLongestSection + 3;
        std::string lines(kCapacity, '\0');
        lines.resize(GetPrivateProfileSectionA(section, lines.data(), kCapacity, path));
        return lines.size() > kLongestSection ? std::nullopt : std::optional(SectionLines(lines));
    }

    int WriteString(const char* section, const char* key, const char* value, const char* path,
                    uint32_t& error) override {
        const CancelAfter limit(kFileMilliseconds);
        if (!limit) {
            error = limit.Error();
            return FALSE;
        }
        const BOOL written = WritePrivateProfileStringA(section, key, value, path);
        error = written ? ERROR_SUCCESS : GetLastError();
        return written;
    }

    void Pause(uint32_t milliseconds) override { Sleep(milliseconds); }
};

}  // namespace

IProfileAccess& SystemProfile() {
    static ProfileApi profile;
    return profile;
}

}  // namespace wrb
