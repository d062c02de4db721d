// cgiServerStatus: the status page of the server, a gateway program of the web console.
#include <windows.h>

#include <algorithm>
#include <exception>
#include <string>

#include "DebugLog.h"
#include "RequestOrigin.h"
#include "ScanDefaults.h"
#include "StatusPage.h"
#include "Text.h"
#include "cgi_GetParameter.h"
#include "cgi_PutStream.h"
#include "cmdhl.h"

namespace wrb {
namespace {

// False without a home folder.
bool BindIniCaches() {
    wchar_t home[kHomeDirCapacity];
    if (!cgi_GetHomeDir(home, kHomeDirCapacity)) {
        return false;
    }
    ScanIniCache().init((std::wstring(home) + L"wrbscan.ini").c_str(), 0);
    ServerIniCache().init((std::wstring(home) + L"Private\\wrbserver.ini").c_str(), 0);
    return true;
}

std::wstring Listed(const std::vector<std::wstring>& keys) {
    std::wstring text;
    for (const std::wstring& key : keys) {
        text += (text.empty() ? L"" : L", ") + key;
    }
    return text;
}

Outcome Told(const StoreResult& result) {
    if (!result.refused.empty()) {
        return {"400 Bad Request", L"Nothing stored. Not a value of: " + Listed(result.refused)};
    }
    if (result.failed) {
        return {"500 Internal Server Error", L"wrbscan.ini could not be written."};
    }
    return {"200 OK", result.changed.empty() ? L"Nothing to change." : L"Stored: " + Listed(result.changed)};
}

constexpr wchar_t kIncomplete[] = L"The form is incomplete, or longer than allowed.";

// The form's last field shows that the form is complete.
Outcome StoreForm(const CGetParameter& request) {
    if (request.Get(L"complete", 0) != 1) {
        return {"400 Bad Request", kIncomplete};
    }
    return Told(
        StoreDefaults(ScanIniCache(), [&](const wchar_t* key) { return request.GetValueByName(key, nullptr); }));
}

// The file is an INI file with the form's section. A key that it lacks, and one with the default below, is not given.
Outcome StoreFile(const CGetParameter& request) {
    constexpr std::wstring_view kAbsent = L"\x7F";
    const std::wstring path = request.GetUploadFile(L"defaults");
    if (path.empty()) {
        return {"400 Bad Request", L"No file came along."};
    }
    wchar_t text[kLongestFormText + 3];  // a truncated text still exceeds the longest valid text
    bool found = false;
    const StoreResult result = StoreDefaults(ScanIniCache(), [&](const wchar_t* key) -> const wchar_t* {
        GetPrivateProfileStringW(FormGroup().section.data(), key, kAbsent.data(), text,
                                 static_cast<DWORD>(std::size(text)), path.c_str());
        found = found || text != kAbsent;
        return text != kAbsent ? text : nullptr;
    });
    return found ? Told(result)
                 : Outcome{"400 Bad Request",
                           L"The file has no setting in its section [" + std::wstring(FormGroup().section) + L"]."};
}

Outcome Refusal(int code) {
    const struct {
        int code;
        const char* status;
        const wchar_t* message;
    } refusals[] = {
        {kCgiBadMethod, "405 Method Not Allowed", L"The page takes GET and POST."},
        {kCgiBadContentType, "415 Unsupported Media Type", L"The page takes forms."},
        {kCgiMultipartNoLength, "411 Length Required", L"The request has no length."},
        {kCgiMultipartTooLong, "413 Content Too Large", L"The request is too long."},
        {kCgiMultipartNoMemory, "500 Internal Server Error", L"Out of memory."},
        {kCgiMultipartFileNotStored, "500 Internal Server Error", L"The file could not be stored."},
        {kCgiNoImplementation, "500 Internal Server Error", L"Out of memory."},
    };
    const auto* const found = std::ranges::find(refusals, code, [](const auto& row) { return row.code; });
    return found != std::end(refusals) ? Outcome{found->status, found->message}
                                       : Outcome{"400 Bad Request", L"The upload is broken."};
}

Outcome Serve(const CGetParameter& request) {
    const int code = request.GetInitializationResult();
    if (code != kCgiFetched) {
        return Refusal(code);
    }
    if (GatewayVariable(L"REQUEST_METHOD") != L"POST") {
        return {};
    }
    if (!ComesFromThisSite()) {
        return {"403 Forbidden", L"The form was sent by another site."};
    }
    const std::wstring action = request.Get(L"action");
    if (action == L"store") {
        return StoreForm(request);
    }
    if (action == L"upload") {
        return StoreFile(request);
    }
    return {"400 Bad Request", action.empty() ? kIncomplete : L"There is no such action."};
}

// Deletes the request's uploads when it has been served, on success and on failure.
class UploadGuard {
  public:
    explicit UploadGuard(CGetParameter& request) : m_request(request) {}
    ~UploadGuard() { m_request.DeleteUploadFiles(); }
    UploadGuard(const UploadGuard&) = delete;
    UploadGuard& operator=(const UploadGuard&) = delete;

  private:
    CGetParameter& m_request;
};

Outcome OutcomeOf(CGetParameter& request) try {
    const UploadGuard guard(request);
    return Serve(request);
} catch (const std::exception& error) {
    WRB_LOG(kLogError, L"%s - %S", L"cgiServerStatus", error.what());
    return {"500 Internal Server Error", L"The request could not be served."};
}

}  // namespace
}  // namespace wrb

int main() try {
    cmdhl_ReloadDebugSetting(L"", L"");  // for the library's lines; the next call is for our own
    DebugLogSetup(L"", L"", "CGISTATUS", true);
    CPutStream out(false);
    if (!wrb::BindIniCaches()) {
        WRB_LOG(kLogError, L"%s - no home folder", L"cgiServerStatus");
        wrb::PutMessagePage(out, {"500 Internal Server Error", L"The server has no home folder."});
        return 0;
    }
    CGetParameter request;
    const wrb::Outcome outcome = wrb::OutcomeOf(request);
    if (!outcome.message.empty()) {
        WRB_LOG(kLogInfo, L"%s - %S: %s", L"cgiServerStatus", outcome.status, outcome.message.c_str());
    }
    wrb::PutStatusPage(out, outcome, ScanIniCache(), ServerIniCache());
    return 0;
} catch (const std::exception& error) {
    WRB_LOG(kLogError, L"%s - %S", L"cgiServerStatus", error.what());
    return 1;
}
