#include <windows.h>

#include <cstring>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "CabinetReader.h"
#include "CreatedFiles.h"
#include "DiskReserve.h"
#include "EntryName.h"
#include "IgnoringCase.h"
#include "Text.h"
#include "WrbPfwCommon.h"

namespace wrb {
namespace {

constexpr std::size_t kMostEntries = 10000;
constexpr int64_t kMostEntryBytes = int64_t{256} << 20;
constexpr int64_t kMostBytes = int64_t{1} << 30;
constexpr std::size_t kPathCapacity = 260;  // of the buffers in which callbacks build an entry's path

struct PlannedEntry {
    EntryName name;
    int64_t bytes = 0;
    bool wanted = true;
};

// First reading: nothing is unpacked, everything is checked that can be checked without.
class Planner final : public ICabinetVisitor {
  public:
    explicit Planner(std::size_t directoryBytes) : m_directoryBytes(directoryBytes) {}

    EntryAction OnEntry(const CabinetEntry& entry) override {
        std::optional<EntryName> name = CheckEntryName(entry.name, entry.nameIsUtf8);
        if (!name || m_directoryBytes + 1 + name->narrow.size() >= kPathCapacity ||
            !m_names.insert(name->wide).second) {
            return EntryAction::Abort;
        }
        if (plan.size() == kMostEntries || entry.bytes < 0 || entry.bytes > kMostEntryBytes ||
            entry.bytes > kMostBytes - m_bytes) {
            return EntryAction::Abort;
        }
        m_bytes += entry.bytes;
        plan.push_back({std::move(*name), entry.bytes});
        return EntryAction::PassOver;
    }

    std::vector<PlannedEntry> plan;

  private:
    std::size_t m_directoryBytes;
    int64_t m_bytes = 0;
    std::set<std::wstring, LessIgnoringCase> m_names;
};

// Second reading: unpacks every entry, also unwanted ones, since only that finds damage. An entry must have exactly the
// bytes that it promised.
class Unpacker final : public ICabinetVisitor {
  public:
    Unpacker(const std::vector<PlannedEntry>& plan, CreatedFiles& files) : m_plan(plan), m_files(files) {}

    EntryAction OnEntry(const CabinetEntry&) override {
        if (HasSeenAll()) {
            return EntryAction::Abort;
        }
        const PlannedEntry& entry = m_plan[m_next++];
        m_missing = entry.bytes;
        m_file = entry.wanted ? m_files.Create(entry.name.wide) : FileHandle();
        return m_file || !entry.wanted ? EntryAction::Unpack : EntryAction::Abort;
    }

    bool Write(const void* data, uint32_t bytes) noexcept override {
        m_missing -= bytes;
        DWORD written = 0;
        return m_missing >= 0 &&
               (!m_file || (WriteFile(m_file.Get(), data, bytes, &written, nullptr) && written == bytes));
    }

    bool Finish() noexcept override {
        m_file.Reset();
        return m_missing == 0;
    }

    bool HasSeenAll() const noexcept { return m_next == m_plan.size(); }

  private:
    const std::vector<PlannedEntry>& m_plan;
    CreatedFiles& m_files;
    std::size_t m_next = 0;
    FileHandle m_file;  // empty for an entry that is not wanted
    int64_t m_missing = 0;
};

// True also where the system does not tell.
bool FitsOnDisk(const std::vector<PlannedEntry>& plan, const std::wstring& folder) {
    uint64_t bytes = 0;
    for (const PlannedEntry& entry : plan) {
        bytes += entry.wanted ? static_cast<uint64_t>(entry.bytes) : 0;
    }
    ULARGE_INTEGER available;
    ULARGE_INTEGER total;
    return !GetDiskFreeSpaceExW(folder.c_str(), &available, &total, nullptr) ||
           LeavesReserve(bytes, available.QuadPart, total.QuadPart);
}

bool UnpackAll(CabinetReader& reader, const std::vector<PlannedEntry>& plan, const std::wstring& folder) {
    CreatedFiles files(folder);
    Unpacker unpacker(plan, files);  // destroyed first: it may still hold a file open
    if (!reader.Read(unpacker) || !unpacker.HasSeenAll()) {
        return false;
    }
    files.Keep();
    return true;
}

// Checks everything, then writes everything or leaves nothing behind. May throw std::bad_alloc, and whatever the
// callback throws; the folder is then as it was, unless the callback was already told of written entries.
bool ExtractPackage(HANDLE package, const char* directory, fpkCallback callback, void* context) {
    const std::wstring folder = AnsiToWide(directory);
    CabinetReader reader;
    Planner planner(std::strlen(directory));
    if (!IsFolder(folder) || !reader.Open(package) || !reader.Read(planner)) {
        return false;
    }
    if (callback != nullptr) {
        for (PlannedEntry& entry : planner.plan) {
            entry.wanted = callback(entry.name.narrow.c_str(), directory, FPK_ENTRY_FOUND, context);
        }
    }
    if (!FitsOnDisk(planner.plan, folder) || !UnpackAll(reader, planner.plan, folder)) {
        return false;
    }
    if (callback != nullptr) {
        for (const PlannedEntry& entry : planner.plan) {
            if (entry.wanted) {
                callback(entry.name.narrow.c_str(), directory, FPK_ENTRY_WRITTEN, context);
            }
        }
    }
    return true;
}

}  // namespace
}  // namespace wrb

bool fpkExtractFile(void* package, const char* directory, fpkCallback callback, void* context) {
    try {
        return directory != nullptr && wrb::ExtractPackage(package, directory, callback, context);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool fpkExtract(const char* package, const char* directory, fpkCallback callback, void* context) {
    const wrb::FileHandle file(package == nullptr ? INVALID_HANDLE_VALUE
                                                  : CreateFileA(package, GENERIC_READ, FILE_SHARE_READ, nullptr,
                                                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return file && fpkExtractFile(file.Get(), directory, callback, context);
}
