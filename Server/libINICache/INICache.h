// Read-through cache of one INI file: a value that was read is served again until it is older than the expiry.
//
// Narrow texts are in the system's ANSI code page; a wide form converts its texts and does the same. A null text counts
// as an empty one. Any thread may call anything at any time. Nothing throws but for lack of memory.
//
// One thread at a time reads the file, without the cache's lock. Meanwhile the others get their values although these
// have expired; who asks for a value that was never read, or was dropped, waits.
//
// A file that cannot be read, because another process has opened it without sharing or holds an oplock, takes no value
// away: what was read before is served on, dropped or not, and a value that was never read is tried once more, then
// the caller's default and not kept. A try takes two seconds at most, the next one follows after a second, and a line
// at level 'W' says so once a minute. A file that can be read, but only slowly, is left alone for that second, too,
// except for values that were never read.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "Clock.h"
#include "ProfileAccess.h"
#include "SRWLock.h"

class CINICache {
  public:
    // `clock` and `profile` must outlive the cache.
    explicit CINICache(const wrb::IClock& clock = wrb::SystemClock(),
                       wrb::IProfileAccess& profile = wrb::SystemProfile());
    CINICache(const CINICache&) = delete;
    CINICache& operator=(const CINICache&) = delete;

    // Binds the cache to a file; the path is cut at 260 characters. Returns 1, or 0 when the file does not exist: the
    // path is kept even so, and reads answer their defaults until the file appears. The expiry becomes `seconds`; it
    // stays as it was (30 seconds at first) when the file is missing or `seconds` is 0. Seconds beyond 49 days mean 49
    // days. A path other than the one before drops what was cached of the old file.
    int init(const char* path, uint32_t seconds);
    int init(const wchar_t* path, uint32_t seconds);

    // Whatever the file gave is kept, the default too: until it expires, a later read gets that earlier default even if
    // it passes another. `bypass` 1 goes to the file and leaves the cache alone. A text that does not begin like a
    // number reads as the default; a negative number comes back as its two's complement.
    uint32_t readINIInt(const char* section, const char* key, int32_t defaultValue, int bypass = 0);
    uint32_t readINIInt(const wchar_t* section, const wchar_t* key, int32_t defaultValue, int bypass = 0);

    // Puts at most `size` - 1 characters of the value and a terminator into `buffer` and returns their number; of the
    // wide form, the number of narrow characters. A `size` of 0 (or a null buffer) writes nothing, 1 only the
    // terminator; both return 0. The cache keeps the whole value (up to 65535 characters) however small the buffer, so
    // that a reader with a short buffer does not shorten the value for the next one. The wide form returns 0 and leaves
    // the buffer as it was when memory is lacking.
    uint32_t readINIString(char* buffer, const char* section, const char* key, const char* defaultText, uint32_t size,
                           int bypass = 0);
    uint32_t readINIString(wchar_t* buffer, const wchar_t* section, const wchar_t* key, const wchar_t* defaultText,
                           uint32_t size, int bypass = 0);

    // Appends the whole section to `lines`: a line "key=value" a key, ended by "\n", in the order of the file
    // (wrb::SectionLines gives the rules). A section that is missing has no lines. False, and nothing is appended, when
    // the section is longer than the system reads one, 32767 characters.
    bool readINISection(std::wstring& lines, const wchar_t* section, int bypass = 0);

    // Writes through to the file, without the lock, and drops the key and its section whether or not that worked. Up to
    // six attempts, 100 ms apart. Returns the system's result, non-zero on success. A null value deletes the key; a
    // null section or key, which the system would take as an order to delete a whole section, is refused with 0.
    int writeINIString(const char* section, const char* key, const char* value);
    int writeINIString(const wchar_t* section, const wchar_t* key, const wchar_t* value);
    int writeINIInt(const char* section, const char* key, int32_t value);
    int writeINIInt(const wchar_t* section, const wchar_t* key, int32_t value);

    // Drops everything: the next reads go to the file.
    void clear();

  private:
    template <typename Value>
    struct Entry {
        Value value;
        uint32_t readTick;
        bool isDropped = false;  // only of use while the file cannot be read
    };
    // By section, ":" and key, exactly as the caller gave them; whole sections by their name.
    template <typename Value>
    using Table = std::map<std::string, Entry<Value>, std::less<>>;

    struct Trouble {
        uint32_t tick = 0;  // when the last try ended
        bool isSlow = false;
        bool isUnreadable = false;
        bool isTold = false;
        uint32_t toldTick = 0;
    };

    template <typename Value>
    static const Entry<Value>* Find(const Table<Value>& table, std::string_view key);
    template <typename Value>
    static void Drop(Table<Value>& table, std::string_view key);
    template <typename Value>
    static void DropAll(Table<Value>& table);
    template <typename Value>
    bool IsFresh(const Entry<Value>& entry) const WRB_REQUIRES_SHARED(m_lock);
    bool Rests() const WRB_REQUIRES_SHARED(m_lock);
    bool NoteTry(uint32_t start, bool isUnreadable) WRB_REQUIRES(m_lock);

    template <typename Value, typename ReadFile, typename Default, typename Use>
    uint32_t Read(Table<Value> CINICache::*table, std::string_view key, int bypass, ReadFile readFile,
                  Default byDefault, Use use);
    template <typename Value, typename ReadFile, typename Default, typename Use>
    uint32_t ReadInTurn(Table<Value> CINICache::*table, std::string_view key, ReadFile readFile, Default byDefault,
                        Use use);
    template <typename Char>
    uint32_t ReadNumber(const Char* section, const Char* key, int32_t defaultValue, int bypass);
    template <typename Char, typename Copy>
    uint32_t ReadText(const Char* section, const Char* key, const Char* defaultText, int bypass, Copy copy);
    std::string CurrentPath();

    const wrb::IClock& m_clock;
    wrb::IProfileAccess& m_profile;
    std::mutex m_turn;  // of the thread that reads the file; taken before the lock
    CWrbSRWLock m_lock;
    std::string m_path WRB_GUARDED_BY(m_lock);
    uint32_t m_changes WRB_GUARDED_BY(m_lock) = 0;  // what was read before one is not kept
    Trouble m_trouble WRB_GUARDED_BY(m_lock);
    uint32_t m_expiryMs WRB_GUARDED_BY(m_lock) = 30000;
    // A key that is read both as a number and as text has an entry in each.
    Table<uint32_t> m_integers WRB_GUARDED_BY(m_lock);
    Table<std::string> m_texts WRB_GUARDED_BY(m_lock);
    Table<std::optional<std::string>> m_sections WRB_GUARDED_BY(m_lock);  // nothing: too long
};

// The caches of the server's three INI files. Each exists from its first use, before anybody binds it to its file,
// until the library is unloaded.
CINICache& ScanIniCache();    // wrbscan.ini
CINICache& ServerIniCache();  // Private\wrbserver.ini
CINICache& SbaIniCache();     // private\wrbSbaSvr.ini
