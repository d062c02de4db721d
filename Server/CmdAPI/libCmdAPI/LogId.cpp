#include "LogId.h"

#include <windows.h>

#include <objbase.h>

#include "ComInitiator.h"
#include "DebugLog.h"
#include "Text.h"

// Log lines name the module that this file was part of.
#undef WRB_SOURCE_NAME
#define WRB_SOURCE_NAME "Server/CmdAPI/libCmdAPILogPool/LogId.cpp"

bool cwCreateGUID(wchar_t* id, std::size_t capacity) {
    const UTIL::CComInitiator com(COINIT_MULTITHREADED);
    GUID guid{};
    if (const HRESULT status = CoCreateGuid(&guid); FAILED(status)) {
        WRB_LOG(kLogError, L"%s - Fail to call CoCreateGuid, HRESULT=0x%08x", L"cwCreateGUID", status);
        return false;
    }
    if (capacity < wrb::kLogIdCapacity) {
        const HRESULT status = HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
        WRB_LOG(kLogError, L"%s - Fail to get result, HRESULT=0x%08x", L"cwCreateGUID", status);
        return false;
    }
    const BYTE* const tail = guid.Data4;
    wrb::FormatInto(id, capacity, L"%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", guid.Data1, guid.Data2,
                    guid.Data3, tail[0], tail[1], tail[2], tail[3], tail[4], tail[5], tail[6], tail[7]);
    return true;
}
