#include "CheckPFWLogVersion.h"

#include "DebugLog.h"

namespace {

// One record from the file's position; what the file lacks of it is zero. False when nothing was read.
template <typename Item>
bool ReadFirst(HANDLE file, Item& item) {
    item = {};
    DWORD read = 0;
    return ReadFile(file, &item, sizeof item, &read, nullptr) && read != 0;
}

void Rewind(HANDLE file) {
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
}

int32_t ReportVersion(int32_t version) {
    WRB_LOG(kLogDebug8, L"CheckPFWLogVersion: bRetVer=(%d)", version);
    return version;
}

}  // namespace

int32_t CheckPFWLogVersion(HANDLE file) {
    SWRB_PFW_LOG_ITEM_V0 v0;
    if (ReadFirst(file, v0)) {
        WRB_LOG(kLogDebug8, L"CheckPFWLogVersion: PfwLogV0.byHead(%x), PfwLogV0.byRear(%x)", v0.byHead, v0.byRear);
        if (wrb::HasPfwLogMarkers(v0)) {
            Rewind(file);
            return ReportVersion(0);
        }
    }
    Rewind(file);
    SWRB_PFW_LOG_ITEM v1;
    if (!ReadFirst(file, v1)) {
        return ReportVersion(-1);
    }
    WRB_LOG(kLogDebug8, L"CheckPFWLogVersion: PfwLogV1.byHead(%x), PfwLogV1.byRear(%x)", v1.byHead, v1.byRear);
    const int32_t version = wrb::HasPfwLogMarkers(v1) ? 1 : -1;
    Rewind(file);
    return ReportVersion(version);
}

wrb::PfwLogVersion wrb::PfwLogVersionOfFile(HANDLE file, uint32_t bytes) {
    const PfwLogVersion bySize = PfwLogVersionOfSize(bytes);
    return bySize == PfwLogVersion::kUnknown ? static_cast<PfwLogVersion>(CheckPFWLogVersion(file)) : bySize;
}
