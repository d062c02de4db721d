#include "INICache.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory_resource>
#include <new>
#include <type_traits>
#include <utility>

#include "DebugLog.h"
#include "SystemText.h"
#include "Text.h"

namespace {

constexpr int kWriteAttempts = 6;
constexpr uint32_t kRetryPauseMs = 100;
constexpr uint32_t kSlowMs = 500;
constexpr uint32_t kRestMs = 1'000;
constexpr uint32_t kToldMs = 60'000;
constexpr int kBypass = 1;
constexpr std::size_t kPathLimit = 260;

std::string Narrow(const char* text) {
    return text != nullptr ? text : "";
}

std::string Narrow(const wchar_t* text) {
    return text != nullptr ? wrb::WideToAnsi(text) : "";
}

// The key of an entry. It lies on the stack as far as it fits, so that a hit allocates nothing.
class EntryKey {
  public:
    template <typename Char>
    EntryKey(const Char* section, const Char* key) {
        m_text.reserve(sizeof m_room / 2);
        Append(section);
        m_text += ':';
        Append(key);
    }
    EntryKey(const EntryKey&) = delete;
    EntryKey& operator=(const EntryKey&) = delete;

    operator std::string_view() const noexcept { return m_text; }

  private:
    void Append(const char* text) { m_text += text != nullptr ? text : ""; }

    // ASCII is the same in every code page; the rest is converted from the first other character on.
    void Append(const wchar_t* text) {
        for (; text != nullptr && *text != L'\0'; ++text) {
            if (static_cast<std::make_unsigned_t<wchar_t>>(*text) >= 0x80) {
                m_text += wrb::WideToAnsi(text);
                return;
            }
            m_text += static_cast<char>(*text);
        }
    }

    char m_room[512];
    std::pmr::monotonic_buffer_resource m_memory{m_room, sizeof m_room};
    std::pmr::string m_text{&m_memory};
};

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
    const std::string bounded = Narrow(path).substr(0, kPathLimit);
    const bool exists = m_profile.FileExists(bounded.c_str());

    wrb::ExclusiveGuard guard(m_lock);
    if (m_path != bounded) {
        m_path = bounded;
        ++m_changes;
        m_trouble = {};
        m_integers.clear();
        m_texts.clear();
        m_sections.clear();
    }
    if (exists && seconds != 0) {
        m_expiryMs = std::min(seconds, std::numeric_limits<uint32_t>::max() / 1000) * 1000;
    }
    return exists ? 1 : 0;
}

int CINICache::init(const wchar_t* path, uint32_t seconds) {
    return init(Narrow(path).c_str(), seconds);
}

template <typename Value>
const CINICache::Entry<Value>* CINICache::Find(const Table<Value>& table, std::string_view key) {
    const auto found = table.find(key);
    return found == table.end() ? nullptr : &found->second;
}

template <typename Value>
void CINICache::Drop(Table<Value>& table, std::string_view key) {
    if (const auto found = table.find(key); found != table.end()) {
        found->second.isDropped = true;
    }
}

template <typename Value>
void CINICache::DropAll(Table<Value>& table) {
    for (auto& [key, entry] : table) {
        entry.isDropped = true;
    }
}

// In 32-bit unsigned arithmetic the tick counter's wrap-around does no harm.
template <typename Value>
bool CINICache::IsFresh(const Entry<Value>& entry) const {
    return m_clock.TickMilliseconds() - entry.readTick <= m_expiryMs;
}

// Whether the file is to be left alone.
bool CINICache::Rests() const {
    return (m_trouble.isUnreadable || m_trouble.isSlow) && m_clock.TickMilliseconds() - m_trouble.tick < kRestMs;
}

// True: a line is due.
bool CINICache::NoteTry(uint32_t start, bool isUnreadable) {
    const uint32_t now = m_clock.TickMilliseconds();
    m_trouble.isUnreadable = isUnreadable;
    m_trouble.isSlow = now - start >= kSlowMs;
    m_trouble.tick = now;
    const bool isDue = isUnreadable && (!m_trouble.isTold || now - m_trouble.toldTick >= kToldMs);
    if (isDue) {
        m_trouble.isTold = true;
        m_trouble.toldTick = now;
    }
    return isDue;
}

// `use` gets the value and returns the caller's result; under the lock, where the value is the cache's.
template <typename Value, typename ReadFile, typename Default, typename Use>
uint32_t CINICache::Read(Table<Value> CINICache::*table, std::string_view key, int bypass, ReadFile readFile,
                         Default byDefault, Use use) {
    if (bypass == kBypass) {
        const std::string path = CurrentPath();
        Value value{};
        const bool isRead = m_profile.WhileReadable(path.c_str(), [&] { value = readFile(path.c_str()); }) == 0;
        return use(isRead ? value : byDefault());
    }
    std::unique_lock turn(m_turn, std::defer_lock);
    {
        wrb::SharedGuard guard(m_lock);
        const Entry<Value>* const entry = Find(this->*table, key);
        if (entry != nullptr && !entry->isDropped && (IsFresh(*entry) || Rests() || !turn.try_lock())) {
            return use(entry->value);
        }
    }
    if (!turn.owns_lock()) {
        turn.lock();
    }
    return ReadInTurn(table, key, readFile, byDefault, use);
}

template <typename Value, typename ReadFile, typename Default, typename Use>
uint32_t CINICache::ReadInTurn(Table<Value> CINICache::*table, std::string_view key, ReadFile readFile,
                               Default byDefault, Use use) {
    std::string path;
    uint32_t changes;
    bool isKnown;
    {
        wrb::SharedGuard guard(m_lock);
        const Entry<Value>* const entry = Find(this->*table, key);
        if (entry != nullptr && !entry->isDropped && (IsFresh(*entry) || Rests())) {
            return use(entry->value);  // read while this thread waited for its turn
        }
        if (m_trouble.isUnreadable && Rests()) {
            return use(entry != nullptr ? entry->value : byDefault());
        }
        path = m_path;
        changes = m_changes;
        isKnown = entry != nullptr;
    }
    const uint32_t start = m_clock.TickMilliseconds();
    Value value{};
    const auto tryToRead = [&] {
        return m_profile.WhileReadable(path.c_str(), [&] { value = readFile(path.c_str()); });
    };
    uint32_t error = tryToRead();
    if (error != 0 && !isKnown) {
        // The default would be a wrong answer: this process itself may have stood still for the two seconds.
        error = tryToRead();
    }
    uint32_t result;
    bool isDue;
    {
        wrb::ExclusiveGuard guard(m_lock);
        isDue = NoteTry(start, error != 0);
        if (error == 0 && changes == m_changes) {
            Entry<Value> entry{std::move(value), m_clock.TickMilliseconds()};
            return use((this->*table).insert_or_assign(std::string(key), std::move(entry)).first->second.value);
        }
        const Entry<Value>* const entry = Find(this->*table, key);
        result = use(error == 0 ? value : entry != nullptr ? entry->value : byDefault());
    }
    if (isDue) {
        WRB_LOG(kLogWarning, L"CINICache - cannot read %S, earlier values stay in force: %s", path.c_str(),
                wrb::WideSystemText(error).c_str());
    }
    return result;
}

template <typename Char>
uint32_t CINICache::ReadNumber(const Char* section, const Char* key, int32_t defaultValue, int bypass) {
    const auto readFile = [&](const char* path) {
        return m_profile.ReadInt(Narrow(section).c_str(), Narrow(key).c_str(), defaultValue, path);
    };
    const auto byDefault = [=] { return static_cast<uint32_t>(defaultValue); };
    return Read(&CINICache::m_integers, EntryKey(section, key), bypass, readFile, byDefault,
                [](uint32_t value) { return value; });
}

template <typename Char, typename Copy>
uint32_t CINICache::ReadText(const Char* section, const Char* key, const Char* defaultText, int bypass, Copy copy) {
    const auto readFile = [&](const char* path) {
        return m_profile.ReadString(Narrow(section).c_str(), Narrow(key).c_str(), Narrow(defaultText).c_str(), path);
    };
    return Read(
        &CINICache::m_texts, EntryKey(section, key), bypass, readFile, [=] { return Narrow(defaultText); }, copy);
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

bool CINICache::readINISection(std::wstring& lines, const wchar_t* section, int bypass) {
    const std::string name = Narrow(section);
    const auto readFile = [&](const char* path) { return m_profile.ReadSection(name.c_str(), path); };
    const auto append = [&](const std::optional<std::string>& text) {
        lines += wrb::AnsiToWide(text.value_or(""));
        return text ? 1 : 0;
    };
    return Read(
               &CINICache::m_sections, name, bypass, readFile, [] { return std::optional<std::string>(""); }, append) !=
           0;
}

int CINICache::writeINIString(const char* section, const char* key, const char* value) {
    if (section == nullptr || key == nullptr) {
        return 0;
    }
    constexpr const wchar_t* kFunction = L"CINICache::writeINIString";
    const std::string path = CurrentPath();
    int written = 0;
    uint32_t error = 0;
    for (int retry = 0; retry < kWriteAttempts && written == 0; ++retry) {
        written = m_profile.WriteString(section, key, value, path.c_str(), error);
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
    const EntryKey entry(section, key);
    wrb::ExclusiveGuard guard(m_lock);
    ++m_changes;
    Drop(m_texts, entry);
    Drop(m_integers, entry);
    Drop(m_sections, section);
    return written;
}

int CINICache::writeINIString(const wchar_t* section, const wchar_t* key, const wchar_t* value) {
    if (section == nullptr || key == nullptr) {
        return 0;
    }
    const std::string valueText = Narrow(value);
    return writeINIString(Narrow(section).c_str(), Narrow(key).c_str(), value != nullptr ? valueText.c_str() : nullptr);
}

int CINICache::writeINIInt(const char* section, const char* key, int32_t value) {
    return writeINIString(section, key, std::to_string(value).c_str());
}

int CINICache::writeINIInt(const wchar_t* section, const wchar_t* key, int32_t value) {
    return writeINIString(section, key, std::to_wstring(value).c_str());
}

void CINICache::clear() {
    wrb::ExclusiveGuard guard(m_lock);
    ++m_changes;
    DropAll(m_integers);
    DropAll(m_texts);
    DropAll(m_sections);
}

std::string CINICache::CurrentPath() {
    wrb::SharedGuard guard(m_lock);
    return m_path;
}
