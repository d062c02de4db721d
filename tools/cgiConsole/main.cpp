// cgiConsole: the server's console in the browser, a gateway program.
#include <windows.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Answer.h"
#include "CommandLine.h"
#include "DebugLog.h"
#include "ExitCode.h"
#include "Frame.h"
#include "HomeFolder.h"
#include "INICache.h"
#include "RequestOrigin.h"
#include "Resources.h"
#include "Session.h"
#include "Text.h"
#include "cgi_PutStream.h"
#include "cmdhl.h"

namespace wrb {
namespace {

constexpr wchar_t kModule[] = L"cgiConsole";

std::wstring HomeFolderOf() {
    wchar_t home[kHomeDirCapacity];
    return cgi_GetHomeDir(home, kHomeDirCapacity) ? home : L"";
}

void BindIniCaches(const std::wstring& home) {
    ScanIniCache().init((home + kScanIniFile).c_str(), 0);
    ServerIniCache().init((home + kServerIniFile).c_str(), 0);
}

// A file that the pages load. Its address changes with its content, so browsers may keep it.
std::optional<Answer> AssetAnswer(const Request& request) {
    constexpr struct {
        std::wstring_view name;
        const char* resource;
        const char* type;
    } kAssets[] = {
        {L"style", "style", "text/css; charset=utf-8"},
        {L"script", "script", "text/javascript; charset=utf-8"},
    };
    const auto* const found =
        std::ranges::find(kAssets, request.Text(L"page"), [](const auto& asset) { return asset.name; });
    if (found == std::end(kAssets)) {
        return std::nullopt;
    }
    return Answer{.headers = {std::string("Content-Type: ") + found->type, "Cache-Control: max-age=604800"},
                  .body = std::string(ResourceText(found->resource))};
}

// Ends the process when the web server neither sends the rest of a request nor takes the answer.
void EndInTime() {
    std::thread([] {
        constexpr std::chrono::minutes kLongest{5};
        std::this_thread::sleep_for(kLongest);
        WRB_LOG(kLogError, L"%s - the request is given up after %d minutes", kModule,
                static_cast<int>(kLongest.count()));
        TerminateProcess(GetCurrentProcess(), kExitTimedOut);
    }).detach();
}

// What the request reader says; nothing when the request is whole.
std::optional<View> ReaderRefusal(int code) {
    const struct {
        int code;
        const char* status;
        const wchar_t* note;
    } refusals[] = {
        {kCgiBadMethod, "405 Method Not Allowed", L"The console takes GET and POST."},
        {kCgiBadContentType, "415 Unsupported Media Type", L"The console takes forms."},
        {kCgiMultipartNoLength, "411 Length Required", L"The request has no length."},
        {kCgiMultipartTooLong, "413 Content Too Large", L"The request is too long."},
        {kCgiMultipartNoMemory, "500 Internal Server Error", L"Out of memory."},
        {kCgiMultipartFileNotStored, "500 Internal Server Error", L"The file could not be stored."},
        {kCgiNoImplementation, "500 Internal Server Error", L"Out of memory."},
    };
    if (code == kCgiFetched) {
        return std::nullopt;
    }
    const auto* const found = std::ranges::find(refusals, code, [](const auto& row) { return row.code; });
    return found != std::end(refusals) ? Refusal(found->status, found->note)
                                       : Refusal("400 Bad Request", L"The upload is broken.");
}

bool ReadsNeedUser() {
    return ServerIniCache().readINIInt(L"Console", L"RequireUser", 1) != 0;
}

// Nothing without the key of the forms: then pages can be read, and have no forms.
std::optional<Session> SessionOf(const Request& request, const std::wstring& home) try {
    return Session(request, home);
} catch (const std::runtime_error& error) {
    WRB_LOG(kLogError, L"%s - %S", kModule, error.what());
    return std::nullopt;
}

constexpr wchar_t kNobody[] = L"Sign in first: the web server names no user for this request.";

// Why a request is not served; nothing when it may be.
std::optional<View> AccessRefusal(const Request& request, const std::optional<Session>& session) {
    if (request.User().empty() && (request.IsPost() || ReadsNeedUser())) {
        return Refusal("403 Forbidden", kNobody);
    }
    if (!request.IsPost()) {
        return IsPartOfAnotherSite() ? std::optional(Refusal("403 Forbidden", L"Another site asks for this page."))
                                     : std::nullopt;
    }
    if (!ComesFromThisSite()) {
        return Refusal("403 Forbidden", L"The form was sent by another site.");
    }
    // The form's last field: a form that was cut or too long to read lacks it.
    if (!request.Has(L"complete")) {
        return Refusal("400 Bad Request", L"The form is incomplete, or longer than allowed.");
    }
    if (!session) {
        return Refusal("500 Internal Server Error", L"The console has no key for its forms. The debug log says why.");
    }
    if (!session->Admits(request)) {
        return Refusal("403 Forbidden", L"The form is of another session or user. Nothing was stored; send it again.");
    }
    return std::nullopt;
}

View Serve(const Request& request, const Page& page) {
    if (!request.IsPost()) {
        return page.show(request);
    }
    return page.act != nullptr ? page.act(request) : Refusal("405 Method Not Allowed", L"This page takes no form.");
}

Answer AnswerOf(Frame& frame, View& view, const std::string& cookie) {
    if (!view.note.empty()) {
        WRB_LOG(kLogInfo, L"%s - %S: %s", kModule, view.status, view.note.c_str());
    }
    if (!view.location.empty()) {
        return RedirectTo(SelfAddress() + WideToUtf8(view.location));
    }
    Answer answer{.status = view.status,
                  .headers = {"Content-Type: text/html; charset=utf-8", "Cache-Control: no-store"},
                  .body = RenderPage(frame, view)};
    if (!cookie.empty()) {
        answer.headers.push_back(cookie);
    }
    return answer;
}

// The note alone, under the menu.
Answer NoteAnswer(const char* status, std::wstring note) {
    Frame frame;
    View view = Refusal(status, std::move(note));
    return AnswerOf(frame, view, "");
}

Answer AnswerRequest(const std::wstring& home) {
    const Request request;
    request.DropUnreadBody();
    if (std::optional<View> refusal = ReaderRefusal(request.Status())) {
        return NoteAnswer(refusal->status, refusal->note);
    }
    if (std::optional<Answer> asset = AssetAnswer(request)) {
        return *asset;
    }
    const std::optional<Session> session = SessionOf(request, home);
    if (std::optional<View> refusal = AccessRefusal(request, session)) {
        return NoteAnswer(refusal->status, refusal->note);
    }
    Frame frame{.page = FindPage(request), .user = request.User(), .token = session ? session->Token() : ""};
    if (frame.page == nullptr) {
        return NoteAnswer("404 Not Found", L"The console has no such page.");
    }
    View view = Serve(request, *frame.page);
    return AnswerOf(frame, view, session ? session->CookieHeader() : "");
}

Answer SafeAnswer() try {
    const std::wstring home = HomeFolderOf();
    if (home.empty()) {
        return NoteAnswer("500 Internal Server Error", L"The server has no home folder.");
    }
    BindIniCaches(home);
    return AnswerRequest(home);
} catch (const std::exception& error) {
    WRB_LOG(kLogError, L"%s - %S", kModule, error.what());
    return NoteAnswer("500 Internal Server Error", L"The request could not be served. The debug log says why.");
}

// The exit code for a person who asks for the version or help; nothing for a web server, which may pass words of the
// query as arguments.
std::optional<int> AnswerPerson() {
    const std::vector<std::string> arguments = Utf8Arguments();
    if (arguments.empty() || !GatewayVariable(L"REQUEST_METHOD").empty()) {
        return std::nullopt;
    }
    CLI::App app{"The server's console in the browser: a web server runs it as a gateway program", "cgiConsole"};
    return ParseArguments(app, arguments);
}

}  // namespace
}  // namespace wrb

int main() try {
    if (const std::optional<int> code = wrb::AnswerPerson()) {
        return *code;
    }
    cmdhl_ReloadDebugSetting(L"", L"");  // for the library's lines; the next call is for our own
    DebugLogSetup(L"", L"", "CONSOLE", true);
    wrb::EndInTime();
    CPutStream out(false);
    wrb::PutAnswer(out, wrb::SafeAnswer());
    return 0;
} catch (const std::exception& error) {
    WRB_LOG(kLogError, L"%s - %S", wrb::kModule, error.what());
    return 1;
}
