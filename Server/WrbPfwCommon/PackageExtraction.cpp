#include "PackageExtraction.h"

#include <windows.h>

#include <cstring>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "CabinetReader.h"
#include "CreatedFiles.h"
#include "EntryName.h"
#include "LessIgnoringCase.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::size_t kMostEntries = 10000;
constexpr int64_t kMostEntryBytes = int64_t{256} << 20;
constexpr int64_t kMostBytes = int64_t{1} << 30;
constexpr std::size_t kPathCapacity = 260;  // of the buffers in which callbacks build an entry's path

struct tagPlannedEntry {
    tagEntryName name;
    int64_t bytes = 0;
    bool wanted = true;
};

// First reading: nothing is unpacked, everything is checked that can be checked without.
class CPlanner final : public ICabinetVisitor {
  public:
    explicit CPlanner(std::size_t directoryBytes) : m_directoryBytes(directoryBytes) {}

    bool OnEntry(const tagCabinetEntry& entry, IEntryData*&) override {
        std::optional<tagEntryName> name = CheckEntryName(entry.name, entry.nameIsUtf8);
        if (!name || m_directoryBytes + 1 + name->narrow.size() >= kPathCapacity ||
            !m_names.insert(name->wide).second) {
            return false;
        }
        if (plan.size() == kMostEntries || entry.bytes < 0 || entry.bytes > kMostEntryBytes ||
            entry.bytes > kMostBytes - m_bytes) {
            return false;
        }
        m_bytes += entry.bytes;
        plan.push_back({std::move(*name), entry.bytes});
        return true;
    }

    std::vector<tagPlannedEntry> plan;

  private:
    std::size_t m_directoryBytes;
    int64_t m_bytes = 0;
    std::set<std::wstring, LessIgnoringCase> m_names;
};

// Takes exactly the promised bytes, to a file or to nowhere.
class CPlannedData final : public IEntryData {
  public:
    void Begin(int64_t bytes) noexcept {
        m_file.Reset();
        m_isWritten = false;
        m_missing = bytes;
    }
    bool Begin(int64_t bytes, CFileHandle file) noexcept {
        Begin(bytes);
        m_file = std::move(file);
        m_isWritten = true;
        return static_cast<bool>(m_file);
    }

    bool Write(const void* data, uint32_t bytes) noexcept override {
        if (bytes > m_missing) {
            return false;
        }
        m_missing -= bytes;
        DWORD written = 0;
        return !m_isWritten || (WriteFile(m_file.Get(), data, bytes, &written, nullptr) && written == bytes);
    }

    bool Finish() noexcept override {
        m_file.Reset();
        return m_missing == 0;
    }

  private:
    CFileHandle m_file;
    bool m_isWritten = false;
    int64_t m_missing = 0;
};

// Second reading: unpacks every entry, also those that nobody wants, since only that finds damage.
class CUnpacker final : public ICabinetVisitor {
  public:
    CUnpacker(const std::vector<tagPlannedEntry>& plan, CCreatedFiles& files) : m_plan(plan), m_files(files) {}

    bool OnEntry(const tagCabinetEntry&, IEntryData*& data) override {
        if (m_next == m_plan.size()) {
            return false;
        }
        const tagPlannedEntry& entry = m_plan[m_next++];
        data = &m_data;
        if (!entry.wanted) {
            m_data.Begin(entry.bytes);
            return true;
        }
        return m_data.Begin(entry.bytes, m_files.Create(entry.name.wide));
    }

    bool HasSeenAll() const noexcept { return m_next == m_plan.size(); }

  private:
    const std::vector<tagPlannedEntry>& m_plan;
    CCreatedFiles& m_files;
    std::size_t m_next = 0;
    CPlannedData m_data;
};

bool UnpackAll(CCabinetReader& reader, const std::vector<tagPlannedEntry>& plan, const std::wstring& folder) {
    CCreatedFiles files(folder);
    CUnpacker unpacker(plan, files);  // destroyed first: it may still hold a file open
    if (!reader.Read(unpacker) || !unpacker.HasSeenAll()) {
        return false;
    }
    files.Keep();
    return true;
}

}  // namespace

bool ExtractPackage(const char* package, const char* directory, fpkCallback callback, void* context) {
    const std::wstring folder = AnsiToWide(directory);
    CCabinetReader reader;
    CPlanner planner(std::strlen(directory));
    if (!IsFolder(folder) || !reader.Open(package) || !reader.Read(planner)) {
        return false;
    }
    if (callback != nullptr) {
        for (tagPlannedEntry& entry : planner.plan) {
            entry.wanted = callback(entry.name.narrow.c_str(), directory, FPK_ENTRY_FOUND, context);
        }
    }
    if (!UnpackAll(reader, planner.plan, folder)) {
        return false;
    }
    if (callback != nullptr) {
        for (const tagPlannedEntry& entry : planner.plan) {
            if (entry.wanted) {
                callback(entry.name.narrow.c_str(), directory, FPK_ENTRY_WRITTEN, context);
            }
        }
    }
    return true;
}

}  // namespace wrb
