// The system's private-profile functions behind a seam, so that a test can count file reads and make writes fail.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace wrb {

// The most characters that the system reads of a section.
inline constexpr uint32_t kLongestSection = 32767;

// All texts are narrow, in the system's ANSI code page, never null unless said. Implementations are called from many
// threads at once and must allow it.
class IProfileAccess {
  public:
    virtual ~IProfileAccess() = default;

    // Whether `path` names an existing file; a folder does not count.
    virtual bool FileExists(const char* path) = 0;

    // Calls `read`, which reads the file by the three functions below: they do not tell a file that cannot be read from
    // one without the key. Returns 0, also when there is no such file, or the Windows error code when what `read` has
    // found is of no use. Takes two seconds at most. Without an own form the file is taken to be readable.
    virtual uint32_t WhileReadable([[maybe_unused]] const char* path, const std::function<void()>& read) {
        read();
        return 0;
    }

    // The number as the system reads it: leading sign and digits, a negative one as its two's complement. The default
    // when the key is absent or its text does not begin like a number.
    virtual uint32_t ReadInt(const char* section, const char* key, int32_t defaultValue, const char* path) = 0;

    // The whole value, as far as the system reads one: 65535 characters. Throws std::bad_alloc for lack of memory.
    virtual std::string ReadString(const char* section, const char* key, const char* defaultText, const char* path) = 0;

    // The lines of the whole section in the form of SectionLines; empty when there is no such section. Nothing when the
    // section is longer than kLongestSection, the terminators of its lines included. Throws std::bad_alloc.
    virtual std::optional<std::string> ReadSection(const char* section, const char* path) = 0;

    // A null `value` deletes the key. Takes two seconds at most. Returns what the system's write returned, non-zero for
    // success; otherwise `error` is the Windows error code.
    virtual int WriteString(const char* section, const char* key, const char* value, const char* path,
                            uint32_t& error) = 0;

    // Waits between two attempts to write.
    virtual void Pause(uint32_t milliseconds) = 0;
};

// The lines of a section as the system gives them, each ended by a NUL, as "key=value" lines, each ended by "\n". The
// value is what ReadString gives for the key: without blanks and TABs around it, then without a pair of quotes. A
// comment and a line without "=" are left out; of a key that comes again, in any case, only the first line counts.
std::string SectionLines(std::string_view lines);

// The machine's own profile functions; lives for the whole process.
IProfileAccess& SystemProfile();

}  // namespace wrb
