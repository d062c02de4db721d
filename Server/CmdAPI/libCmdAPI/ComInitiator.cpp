#include "ComInitiator.h"

#include "DebugLog.h"

// Log lines name the module that this file was part of.
#undef WRB_SOURCE_NAME
#define WRB_SOURCE_NAME "Server/CmdAPI/libCmdAPILogPool/ComInitiator.cpp"

namespace UTIL {

CComInitiator::CComInitiator(DWORD threadModel) : m_status(CoInitializeEx(nullptr, threadModel)) {
    if (m_status == RPC_E_CHANGED_MODE) {
        constexpr const wchar_t* kFunction = L"CComInitiator::CComInitiator";
        WRB_LOG(kLogWarning,
                L"%s - CoInitializeEx failed due to the thread model change (RPC_E_CHANGED_MODE) with COM error code: "
                L"[%d].",
                kFunction, m_status);
        WRB_LOG(kLogWarning, L"%s - Keep the original thread model.", kFunction);
    }
}

CComInitiator::~CComInitiator() {
    if (SUCCEEDED(m_status)) {
        CoUninitialize();
    } else {
        WRB_LOG(kLogDebug, L"%s - Due to CoInitializeEx failed, skip to call CoUninitialize.",
                L"CComInitiator::~CComInitiator");
    }
}

}  // namespace UTIL
