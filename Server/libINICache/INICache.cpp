#include "INICache.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "DebugLog.h"
#include "KeyText.h"
#include "Text.h"

namespace {

constexpr int kWriteAttempts = 6;
constexpr uint32_t kRetryPauseMs = 100;
constexpr int kBypass = 1;

std::string_view Cut(const std::string& value, uint32_t size) {
    return std::string_view(value).substr(0, size - 1);
}

uint32_t CopyCut(const std::string& value, char* buffer, uint32_t size) {
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    const std::string_view text = Cut(value, size);
    std::memcpy(buffer, text.data(), text.size());
    buffer[text.size()] = '\0';
    return static_cast<uint32_t>(text.size());
}

// The wide text never has more characters than the narrow one, so it fits a buffer of the same size.
uint32_t WidenCut(const std::string& value, wchar_t* buffer, uint32_t size) {
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    const std::string_view text = Cut(value, size);
    std::size_t length = 0;
    while (length < text.size() && static_cast<unsigned char>(text[length]) < 0x80) {
        buffer[length] = static_cast<wchar_t>(text[length]);
        ++length;
    }
    if (length < text.size()) {
        const int narrowLength = static_cast<int>(text.size());
        length = static_cast<std::size_t>(
            MultiByteToWideChar(CP_ACP, 0, text.data(), narrowLength, buffer, static_cast<int>(text.size())));
    }
    buffer[length] = L'\0';
    return static_cast<uint32_t>(text.size());
}

}  // namespace

CINICache::CINICache(const wrb::IClock& clock, wrb::IProfileAccess& profile) : m_clock(clock), m_profile(profile) {}

int CINICache::init(const char* path, uint32_t seconds) {
    Path bounded = {};
    std::strncpy(bounded.text, wrb::NarrowText(path).Get(), kPathLimit);
    const bool exists = m_profile.FileExists(bounded.text);

    wrb::ExclusiveGuard guard(m_lock);
    if (std::strcmp(m_path.text, bounded.text) != 0) {
        m_path = bounded;
        m_integers.Clear();
        m_texts.Clear();
    }
    if (exists && seconds != 0) {
        m_expiryMs = std::min(seconds, std::numeric_limits<uint32_t>::max() / 1000) * 1000;
    }
    return exists ? 1 : 0;
}

int CINICache::init(const wchar_t* path, uint32_t seconds) {
    return init(wrb::NarrowText(path).Get(), seconds);
}

template <typename Value>
const Value* CINICache::FindFresh(const EntryTable<Value>& table, const wrb::EntryKey& key) const {
    const Entry<Value>* found = table.Find(key);
    // In 32-bit unsigned arithmetic the tick counter's wrap-around does no harm.
    const bool fresh = found != nullptr && m_clock.TickMilliseconds() - found->readTick <= m_expiryMs;
    return fresh ? &found->value : nullptr;
}

template <typename Value>
const Value& CINICache::Store(EntryTable<Value>& table, const wrb::EntryKey& key, Value value) {
    Entry<Value>& entry = table.FindOrAdd(key);
    entry.value = std::move(value);
    entry.readTick = m_clock.TickMilliseconds();
    return entry.value;
}

// Both forms of a read look the key up as it came; texts are converted only to ask the file.
template <typename Char>
uint32_t CINICache::ReadNumber(const Char* section, const Char* key, int32_t defaultValue, int bypass) {
    const auto readFile = [&](const Path& path) {
        return m_profile.ReadInt(wrb::NarrowText(section).Get(), wrb::NarrowText(key).Get(), defaultValue, path.text);
    };
    if (bypass == kBypass) {
        return readFile(CurrentPath());
    }
    const wrb::EntryKey entry(section, key);
    {
        wrb::SharedGuard guard(m_lock);
        if (const uint32_t* value = FindFresh(m_integers, entry)) {
            return *value;
        }
    }
    wrb::ExclusiveGuard guard(m_lock);
    // Another thread may have read it while this one waited for the lock.
    if (const uint32_t* value = FindFresh(m_integers, entry)) {
        return *value;
    }
    return Store(m_integers, entry, readFile(m_path));
}

// `copy` takes the whole value to the caller's buffer, under the lock, and returns the caller's count.
template <typename Char, typename Copy>
uint32_t CINICache::ReadText(const Char* section, const Char* key, const Char* defaultText, int bypass, Copy copy) {
    const auto readFile = [&](const Path& path) {
        return m_profile.ReadString(wrb::NarrowText(section).Get(), wrb::NarrowText(key).Get(),
                                    wrb::NarrowText(defaultText).Get(), path.text);
    };
    if (bypass == kBypass) {
        return copy(readFile(CurrentPath()));
    }
    const wrb::EntryKey entry(section, key);
    {
        wrb::SharedGuard guard(m_lock);
        if (const std::string* value = FindFresh(m_texts, entry)) {
            return copy(*value);
        }
    }
    wrb::ExclusiveGuard guard(m_lock);
    if (const std::string* value = FindFresh(m_texts, entry)) {
        return copy(*value);
    }
    return copy(Store(m_texts, entry, readFile(m_path)));
}

uint32_t CINICache::readINIInt(const char* section, const char* key, int32_t defaultValue, int bypass) {
    return ReadNumber(section, key, defaultValue, bypass);
}

uint32_t CINICache::readINIInt(const wchar_t* section, const wchar_t* key, int32_t defaultValue, int bypass) {
    return ReadNumber(section, key, defaultValue, bypass);
}

uint32_t CINICache::readINIString(char* buffer, const char* section, const char* key, const char* defaultText,
                                  uint32_t size, int bypass) {
    return ReadText(section, key, defaultText, bypass,
                    [=](const std::string& value) { return CopyCut(value, buffer, size); });
}

uint32_t CINICache::readINIString(wchar_t* buffer, const wchar_t* section, const wchar_t* key,
                                  const wchar_t* defaultText, uint32_t size, int bypass) {
    try {
        return ReadText(section, key, defaultText, bypass,
                        [=](const std::string& value) { return WidenCut(value, buffer, size); });
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

int CINICache::writeINIString(const char* section, const char* key, const char* value) {
    if (section == nullptr || key == nullptr) {
        return 0;
    }
    constexpr const wchar_t* kFunction = L"CINICache::writeINIString";
    const Path path = CurrentPath();
    int written = 0;
    uint32_t error = 0;
    for (int retry = 0; retry < kWriteAttempts && written == 0; ++retry) {
        written = m_profile.WriteString(section, key, value, path.text, error);
        if (written == 0) {
            WRB_LOG(
                kLogInfo,
                L"%s - Failed to write value to INI file. Section: %S, Key: %S, Value: %S, Error: 0x%08x, Retry: %d",
                kFunction, section, key, value, error, retry);
            m_profile.Pause(kRetryPauseMs);
        }
    }
    if (written == 0) {
        WRB_LOG(kLogWarning, L"%s - Failed to write value to INI file. Section: %S, Key: %S, Value: %S, Error: 0x%08x",
                kFunction, section, key, value, error);
    }
    Forget(section, key);
    return written;
}

int CINICache::writeINIString(const wchar_t* section, const wchar_t* key, const wchar_t* value) {
    if (section == nullptr || key == nullptr) {
        return 0;
    }
    const wrb::NarrowText valueText(value);
    return writeINIString(wrb::NarrowText(section).Get(), wrb::NarrowText(key).Get(),
                          value != nullptr ? valueText.Get() : nullptr);
}

int CINICache::writeINIInt(const char* section, const char* key, int32_t value) {
    char text[20];
    std::snprintf(text, sizeof text, "%d", static_cast<int>(value));
    return writeINIString(section, key, text);
}

int CINICache::writeINIInt(const wchar_t* section, const wchar_t* key, int32_t value) {
    wchar_t text[20];
    wrb::FormatInto(text, std::size(text), L"%d", static_cast<int>(value));
    return writeINIString(section, key, text);
}

void CINICache::clear() {
    wrb::ExclusiveGuard guard(m_lock);
    m_integers.Clear();
    m_texts.Clear();
}

void CINICache::Forget(const char* section, const char* key) {
    const wrb::EntryKey entry(section, key);
    wrb::ExclusiveGuard guard(m_lock);
    m_texts.Erase(entry);
    m_integers.Erase(entry);
}

CINICache::Path CINICache::CurrentPath() {
    wrb::SharedGuard guard(m_lock);
    return m_path;
}
