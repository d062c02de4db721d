#include "CabinetReader.h"

#include <windows.h>
// After windows.h, whose types it uses.
#include <fdi.h>

#include <cstdlib>
#include <limits>
#include <memory>
#include <new>

#include "Compiler.h"
#include "Handle.h"

namespace wrb {
namespace {

constexpr int64_t kLargestPackage = std::numeric_limits<int32_t>::max();

// A sound package is read about once, its directory of entries a few times over. One whose entries refer to the same
// data backwards would have it unpacked again for each of them.
constexpr int64_t kReadsPerByte = 16;
constexpr int64_t kReadAllowance = 1 << 20;

// What FDI knows as a file: the cabinet, or where an entry goes. By itself it can do nothing.
class IFdiFile {
  public:
    static constexpr UINT kFailed = static_cast<UINT>(-1);

    virtual ~IFdiFile() = default;
    virtual UINT Read(void*, UINT) noexcept { return kFailed; }
    virtual UINT Write(const void*, UINT) noexcept { return kFailed; }
    virtual long Seek(long, int) noexcept { return -1; }
    virtual void Close() noexcept {}
};

// One reading position in the package; FDI opens two at a time. It reads by offset: the file's own position is shared.
class PackageView final : public IFdiFile {
  public:
    PackageView(HANDLE file, int64_t size) noexcept
        : m_file(file), m_size(size), m_allowance(size * kReadsPerByte + kReadAllowance) {}

    UINT Read(void* buffer, UINT bytes) noexcept override {
        m_allowance -= bytes;
        if (m_allowance < 0) {
            return kFailed;
        }
        OVERLAPPED position = {};
        position.Offset = static_cast<DWORD>(m_offset);
        DWORD read = 0;
        if (!ReadFile(m_file, buffer, bytes, &read, &position) && GetLastError() != ERROR_HANDLE_EOF) {
            return kFailed;
        }
        m_offset += read;
        return read;
    }

    long Seek(long distance, int origin) noexcept override {
        const int64_t base = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? m_offset : m_size;
        const int64_t target = base + distance;
        if (target < 0 || target > kLargestPackage) {
            return -1;
        }
        m_offset = target;
        return static_cast<long>(target);
    }

    void Close() noexcept override { delete this; }

  private:
    HANDLE m_file;
    int64_t m_size;
    int64_t m_allowance;
    int64_t m_offset = 0;
};

// The entry that is being unpacked.
class EntryFile final : public IFdiFile {
  public:
    explicit EntryFile(ICabinetVisitor& visitor) noexcept : m_visitor(visitor) {}
    ICabinetVisitor& Visitor() noexcept { return m_visitor; }
    UINT Write(const void* bytes, UINT count) noexcept override {
        return m_visitor.Write(bytes, count) ? count : kFailed;
    }

  private:
    ICabinetVisitor& m_visitor;
};

// FDI opens files by name and hands its functions no context: this is the package that the thread is reading.
struct Package {
    HANDLE file = INVALID_HANDLE_VALUE;
    int64_t size = 0;
};
WRB_THREAD_LOCAL Package t_package;

// Wine closes a cabinet once more by a handle of 0 when a reading ends early.
IFdiFile& File(INT_PTR handle) noexcept {
    static IFdiFile none;
    return handle != 0 && handle != -1 ? *reinterpret_cast<IFdiFile*>(handle) : none;
}

INT_PTR HandleOf(IFdiFile* file) noexcept {
    return file != nullptr ? reinterpret_cast<INT_PTR>(file) : -1;
}

std::unique_ptr<PackageView> MakeView() noexcept {
    return std::unique_ptr<PackageView>(new (std::nothrow) PackageView(t_package.file, t_package.size));
}

void* DIAMONDAPI FdiAlloc(ULONG bytes) {
    return std::malloc(bytes);
}
void DIAMONDAPI FdiFree(void* memory) {
    std::free(memory);
}
// Whatever name is asked for: a package cannot make FDI open any other file.
INT_PTR DIAMONDAPI FdiOpen(char*, int, int) {
    return HandleOf(MakeView().release());
}
UINT DIAMONDAPI FdiRead(INT_PTR file, void* buffer, UINT bytes) {
    return File(file).Read(buffer, bytes);
}
UINT DIAMONDAPI FdiWrite(INT_PTR file, void* buffer, UINT bytes) {
    return File(file).Write(buffer, bytes);
}
int DIAMONDAPI FdiClose(INT_PTR file) {
    File(file).Close();
    return 0;
}
long DIAMONDAPI FdiSeek(INT_PTR file, long distance, int origin) {
    return File(file).Seek(distance, origin);
}

struct FdiTraits {
    using Type = HFDI;
    static HFDI Empty() noexcept { return nullptr; }
    static void Close(HFDI fdi) noexcept { FDIDestroy(fdi); }
};
using FdiHandle = UniqueHandle<FdiTraits>;

constexpr INT_PTR kAbort = -1;
constexpr INT_PTR kGoOn = 0;
constexpr INT_PTR kPassOver = 0;

INT_PTR OnEntry(EntryFile& file, const FDINOTIFICATION& notification) noexcept {
    const CabinetEntry entry{notification.psz1, (notification.attribs & _A_NAME_IS_UTF) != 0, notification.cb};
    try {
        const EntryAction action = file.Visitor().OnEntry(entry);
        return action == EntryAction::Unpack ? HandleOf(&file) : action == EntryAction::PassOver ? kPassOver : kAbort;
    } catch (const std::bad_alloc&) {
        return kAbort;
    }
}

INT_PTR DIAMONDAPI FdiNotify(FDINOTIFICATIONTYPE type, PFDINOTIFICATION notification) {
    auto& file = *static_cast<EntryFile*>(notification->pv);
    switch (type) {
        case fdintCABINET_INFO:
            // Names the next cabinet of a set.
            return notification->psz1 != nullptr && *notification->psz1 != '\0' ? kAbort : kGoOn;
        case fdintCOPY_FILE:
            return OnEntry(file, *notification);
        case fdintCLOSE_FILE_INFO:
            return file.Visitor().Finish() ? TRUE : FALSE;
        case fdintENUMERATE:
            return kGoOn;
        case fdintPARTIAL_FILE:  // begins in another cabinet
        case fdintNEXT_CABINET:
            break;
    }
    return kAbort;
}

// FDICopy alone would also take the broken remains of a cabinet for one.
bool IsCabinet(HFDI fdi) noexcept {
    const std::unique_ptr<PackageView> view = MakeView();
    FDICABINETINFO info = {};
    return view && FDIIsCabinet(fdi, HandleOf(view.get()), &info) && !info.hasprev;
}

}  // namespace

bool CabinetReader::Open(HANDLE package) {
    m_file = package;
    LARGE_INTEGER size = {};
    const bool known = GetFileType(package) == FILE_TYPE_DISK && GetFileSizeEx(package, &size);
    m_size = size.QuadPart;
    return known && m_size <= kLargestPackage;
}

bool CabinetReader::Read(ICabinetVisitor& visitor) {
    t_package = {m_file, m_size};
    ERF error = {};
    const FdiHandle fdi(
        FDICreate(FdiAlloc, FdiFree, FdiOpen, FdiRead, FdiWrite, FdiClose, FdiSeek, cpuUNKNOWN, &error));
    if (!fdi || !IsCabinet(fdi.Get())) {
        return false;
    }
    EntryFile file(visitor);
    char name[] = "package";
    char folder[] = "";
    return FDICopy(fdi.Get(), name, folder, 0, FdiNotify, nullptr, &file) != FALSE;
}

}  // namespace wrb
