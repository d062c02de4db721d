#include "RequestBody.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <string>

#include "DebugLog.h"
#include "ProfileAccess.h"
#include "Text.h"

namespace wrb {
namespace {

// For the %d of a log line.
int32_t Shown(int64_t number) {
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp<int64_t>(number, Limits::min(), Limits::max()));
}

constexpr int32_t kBuiltInK = 5120;
constexpr int32_t kHighestK = 1024 * 1024;

// Without a folder there is no file: the system would look in its own.
int32_t ReadIniNumber(const std::wstring& folder, const wchar_t* file, const char* section, const char* key,
                      int32_t defaultValue) {
    const std::string path = WideToAnsi(folder + file);
    return folder.empty() ? defaultValue
                          : static_cast<int32_t>(SystemProfile().ReadInt(section, key, defaultValue, path.c_str()));
}

int32_t LimitInK(IGateway& gateway) {
    // The path is relative to the program's folder: the current folder is the web server's choice.
    const int32_t useDefault = ReadIniNumber(gateway.ProgramFolder(), L".\\..\\..\\..\\wrbscan.ini", "Global Setting",
                                             "UseDefaultMaxCGIPostSize", 0);
    WRB_LOG(kLogDebug, L"%s - CGI UseDefaultPostSize=[%d]", L"CGetCGINameValuePair::getPostSizeLimitInK", useDefault);
    return useDefault != 0 ? kBuiltInK
                           : ReadIniNumber(gateway.HomeFolder(), L"private\\wrbserver.ini", "INI_SERVER_SECTION",
                                           "MaxCGIPostSizeInK", kBuiltInK);
}

// In bytes, at most 1 GiB. A negative number in the file counts as the built-in one.
int32_t PostSizeLimit(IGateway& gateway) {
    const int32_t limitInK = LimitInK(gateway);
    return (limitInK < 0 ? kBuiltInK : std::min(limitInK, kHighestK)) * 1024;
}

// 0 for a text that is no number.
int64_t AnnouncedLength(IGateway& gateway, const wchar_t* function) {
    const std::string text = gateway.Variable(L"CONTENT_LENGTH").value_or("");
    const std::string digits = text.substr(text.starts_with('-') ? 1 : 0);
    if (!digits.empty() && digits.find_first_not_of("0123456789") == digits.npos) {
        return ParseInt64(Utf8ToWide(text));
    }
    if (!text.empty()) {
        WRB_LOG(kLogWarning, L"%s - CONTENT_LENGTH is no number: [%S].", function, text.c_str());
    }
    return 0;
}

void ReadWhole(IGateway& gateway, RequestBody& body, std::size_t length, const wchar_t* function) {
    WRB_LOG(kLogDebug, L"%s - fread >>>", function);
    body.size = gateway.ReadBody(body.bytes.get(), length);
    WRB_LOG(kLogDebug, L"%s - fread <<<", function);
    body.bytes[body.size] = '\0';
    body.status = kCgiFetched;
    if (body.size < length) {
        body.status = kCgiMultipartCutBody;
        WRB_LOG(kLogWarning, L"%s - the body ends at [%d] of [%d] bytes.", function,
                Shown(static_cast<int64_t>(body.size)), Shown(static_cast<int64_t>(length)));
    }
}

}  // namespace

RequestBody ReadRequestBody(IGateway& gateway, const wchar_t* function) {
    RequestBody body;
    const int64_t length = AnnouncedLength(gateway, function);
    if (length == 0) {
        return body;
    }
    const int32_t highest = PostSizeLimit(gateway);
    if (length < 0 || length > highest) {
        WRB_LOG(kLogError, L"%s - Content size[%d] is large then POST size limitation: [%d].", function, Shown(length),
                highest);
        body.status = kCgiMultipartTooLong;
        return body;
    }
    const auto size = static_cast<std::size_t>(length);
    body.bytes.reset(new (std::nothrow) char[size + 1]);
    if (body.bytes == nullptr) {
        WRB_LOG(kLogDebug, L"%s - malloc failed.", function);
        body.status = kCgiMultipartNoMemory;
        return body;
    }
    ReadWhole(gateway, body, size, function);
    return body;
}

}  // namespace wrb
