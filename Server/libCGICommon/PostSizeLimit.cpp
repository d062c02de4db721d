#include "PostSizeLimit.h"

#include <windows.h>

#include <algorithm>

#include "DebugLog.h"

namespace wrb {
namespace {

constexpr int32_t kHighestK = 1024 * 1024 - 1;

// As a signed number: the file may say -1.
int32_t ReadIniNumber(const std::wstring& path, const wchar_t* section, const wchar_t* key, int32_t defaultValue) {
    return static_cast<int32_t>(GetPrivateProfileIntW(section, key, defaultValue, path.c_str()));
}

}  // namespace

int32_t CPostSizeLimit::InK(IGateway& gateway) {
    // The path is told from the program's folder. It is made absolute here: the current folder is the web server's
    // choice.
    const int32_t useDefault = ReadIniNumber(gateway.ProgramFolder() + L".\\..\\..\\..\\wrbscan.ini", L"Global Setting",
                                             L"UseDefaultMaxCGIPostSize", 0);
    WRB_LOG('D', L"%s - CGI UseDefaultPostSize=[%d]", L"CGetCGINameValuePair::getPostSizeLimitInK", useDefault);
    if (useDefault != 0) {
        return kBuiltInK;
    }
    if (!m_read) {
        m_read = true;
        m_limitInK = ReadIniNumber(gateway.HomeFolder() + L"private\\wrbserver.ini", L"INI_SERVER_SECTION",
                                   L"MaxCGIPostSizeInK", kBuiltInK);
    }
    return m_limitInK;
}

int32_t CPostSizeLimit::InBytes(IGateway& gateway) {
    const int32_t limitInK = InK(gateway);
    return (limitInK < 0 ? kBuiltInK : std::min(limitInK, kHighestK)) * 1024;
}

}  // namespace wrb
