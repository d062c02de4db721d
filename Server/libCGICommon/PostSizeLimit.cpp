#include "PostSizeLimit.h"

#include <algorithm>

#include "DebugLog.h"
#include "ProfileAccess.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr int32_t kBuiltInK = 5120;
constexpr int32_t kHighestK = 1024 * 1024;

// As a signed number: the file may say -1. Without a folder there is no file: the system would look in its own.
int32_t ReadIniNumber(const std::wstring& folder, const wchar_t* file, const char* section, const char* key,
                      int32_t defaultValue) {
    const std::string path = WideToAnsi(folder + file);
    return folder.empty() ? defaultValue
                          : static_cast<int32_t>(SystemProfile().ReadInt(section, key, defaultValue, path.c_str()));
}

int32_t LimitInK(IGateway& gateway) {
    // The path is told from the program's folder. It is made absolute here: the current folder is the web server's
    // choice.
    const int32_t useDefault = ReadIniNumber(gateway.ProgramFolder(), L".\\..\\..\\..\\wrbscan.ini", "Global Setting",
                                             "UseDefaultMaxCGIPostSize", 0);
    WRB_LOG('D', L"%s - CGI UseDefaultPostSize=[%d]", L"CGetCGINameValuePair::getPostSizeLimitInK", useDefault);
    return useDefault != 0 ? kBuiltInK
                           : ReadIniNumber(gateway.HomeFolder(), L"private\\wrbserver.ini", "INI_SERVER_SECTION",
                                           "MaxCGIPostSizeInK", kBuiltInK);
}

}  // namespace

int32_t PostSizeLimit(IGateway& gateway) {
    const int32_t limitInK = LimitInK(gateway);
    return (limitInK < 0 ? kBuiltInK : std::min(limitInK, kHighestK)) * 1024;
}

}  // namespace wrb
