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

struct PlannedEntry {
    EntryName name;
    int64_t bytes = 0;
    bool wanted = true;
};

// First reading: nothing is unpacked, everything is checked that can be checked without.
class Planner final : public ICabinetVisitor {
  public:
    explicit Planner(std::size_t directoryBytes) : m_directoryBytes(directoryBytes) {}

    bool OnEntry(const CabinetEntry& entry, IEntryData*&) override {
        std::optional<EntryName> name = CheckEntryName(entry.name, entry.nameIsUtf8);
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

    std::vector<PlannedEntry> plan;

  private:
    std::size_t m_directoryBytes;
    int64_t m_bytes = 0;
    std::set<std::wstring, LessIgnoringCase> m_names;
};

// Takes exactly the promised bytes, to a file or to nowhere.
class PlannedData final : public IEntryData {
  public:
    void Begin(int64_t bytes) noexcept {
        m_file.Reset();
        m_isWritten = false;
        m_missing = bytes;
    }
    bool Begin(int64_t bytes, FileHandle file) noexcept {
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
    FileHandle m_file;
    bool m_isWritten = false;
    int64_t m_missing = 0;
};

// Second reading: unpacks every entry, also unwanted ones, since only that finds damage.
class Unpacker final : public ICabinetVisitor {
  public:
    Unpacker(const std::vector<PlannedEntry>& plan, CreatedFiles& files) : m_plan(plan), m_files(files) {}

    bool OnEntry(const CabinetEntry&, IEntryData*& data) override {
        if (m_next == m_plan.size()) {
            return false;
        }
        const PlannedEntry& entry = m_plan[m_next++];
        data = &m_data;
        if (!entry.wanted) {
            m_data.Begin(entry.bytes);
            return true;
        }
        return m_data.Begin(entry.bytes, m_files.Create(entry.name.wide));
    }

    bool HasSeenAll() const noexcept { return m_next == m_plan.size(); }

  private:
    const std::vector<PlannedEntry>& m_plan;
    CreatedFiles& m_files;
    std::size_t m_next = 0;
    PlannedData m_data;
};

bool UnpackAll(CabinetReader& reader, const std::vector<PlannedEntry>& plan, const std::wstring& folder) {
    CreatedFiles files(folder);
    Unpacker unpacker(plan, files);  // destroyed first: it may still hold a file open
    if (!reader.Read(unpacker) || !unpacker.HasSeenAll()) {
        return false;
    }
    files.Keep();
    return true;
}

}  // namespace

bool ExtractPackage(const char* package, const char* directory, fpkCallback callback, void* context) {
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
    if (!UnpackAll(reader, planner.plan, folder)) {
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

}  // namespace wrb
