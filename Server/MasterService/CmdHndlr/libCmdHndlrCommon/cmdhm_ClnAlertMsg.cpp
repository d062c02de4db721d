#include "cmdhm_ClnAlertMsg.h"

#include <windows.h>

#include <array>
#include <string_view>

#include "AlertFiles.h"
#include "Base64.h"
#include "CancelAfter.h"
#include "DbAgent.h"
#include "DebugLog.h"
#include "Handle.h"
#include "HomeFolder.h"
#include "INICache.h"
#include "OSException.h"
#include "SystemText.h"
#include "Text.h"

namespace {

constexpr std::size_t kPathCharacters = 256;
constexpr DWORD kBytesUsed = 4096;             // of a message file
constexpr std::size_t kTextCharacters = 4096;  // of the zeroed buffer, so that a NUL always follows
constexpr uint32_t kVirusTypesCharacters = 4096;
constexpr std::wstring_view kMark = L" !BASE64ED! ";
constexpr uint32_t kFileMilliseconds = 2'000;  // whoever holds an oplock on a file decides how long it takes
constexpr uint32_t kAlertMessageBit = 32;      // of the agent's configuration-changed bits
constexpr wchar_t kGlobalSetting[] = L"Global Setting";

void AppendWithLineFeeds(std::wstring& output, std::wstring_view text) {
    for (std::size_t end = text.find(L"\r\n"); end != text.npos; end = text.find(L"\r\n")) {
        output.append(text.substr(0, end)).push_back(L'\n');
        text.remove_prefix(end + 2);
    }
    output.append(text);
}

bool ReadMessageFile(std::wstring& output, const std::wstring& home, const wchar_t* fileName) {
    wchar_t path[kPathCharacters] = L"";
    if (!home.empty()) {
        wrb::FormatInto(path, kPathCharacters, L"%sadmin\\%s", home.c_str(), fileName);
    }
    output.clear();
    WRB_LOG(kLogDebug8, L"cmdhm_GetClnAlertMsgIni FN=%s", path);
    if (*path == L'\0') {
        return false;
    }
    const wrb::FileHandle file(
        CreateFileW(path, FILE_READ_DATA, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    wchar_t text[kTextCharacters] = {};
    DWORD bytesRead = 0;
    if (file) {
        ReadFile(file.Get(), text, kBytesUsed, &bytesRead, nullptr);
    } else if (const DWORD error = GetLastError(); error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND) {
        // A missing file is an empty message without a line: the administrator may remove a text.
        WRB_LOG(kLogWarning, L"%s - cannot open %s, the text is empty: %s", L"cmdhm_GetClnAlertMsgIni", path,
                wrb::WideSystemText(error).c_str());
    }
    AppendWithLineFeeds(output, text);
    return true;
}

using AlertMessages = std::array<std::wstring, std::size(wrb::kAlertFiles)>;

// Reads the home folder once for all files: it is in the registry, which costs as much as a file. The files share the
// time.
bool ReadMessageFiles(AlertMessages& messages) {
    const std::wstring home = wrb::HomeFolder();
    const wrb::CancelAfter limit(kFileMilliseconds);
    bool anyRead = false;
    for (std::size_t i = 0; limit && i < messages.size(); ++i) {
        anyRead |= ReadMessageFile(messages[i], home, wrb::kAlertFiles[i].name);
    }
    return anyRead;
}

// Appends the encoded text and returns its length in characters.
std::size_t AppendEncoded(std::wstring& output, std::wstring_view message) {
    std::wstring plain;
    plain.reserve(kMark.size() + message.size());
    plain.append(kMark).append(message);
    const std::size_t start = output.size();
    try {
        wrb::AppendBase64(output, {reinterpret_cast<const uint8_t*>(plain.data()), plain.size() * sizeof(wchar_t)});
    } catch (const OS::CException& error) {
        WRB_LOG(kLogError, L"%s - cannot encode: %s", L"cmdhm_GetClnAlertMsg", wrb::Utf8ToWide(error.what()).c_str());
    }
    return output.size() - start;
}

void AppendMessage(std::wstring& output, const wrb::AlertFile& file, std::wstring_view message) {
    output.append(file.textKey).append(L" = ");
    const std::size_t length = AppendEncoded(output, message);
    output.append(L"\n").append(file.lengthKey).append(L" = ").append(std::to_wstring(length)).append(L"\n");
}

void AppendSettings(std::wstring& output) {
    const uint32_t severity = ScanIniCache().readINIInt(kGlobalSetting, L"UseVirusAlertSeverity", 0);
    wchar_t types[kVirusTypesCharacters] = L"";
    ScanIniCache().readINIString(types, kGlobalSetting, L"HighRiskVirusType", L"Worm,Trojan", kVirusTypesCharacters);
    output.append(L"UseVirusAlertSeverity = ").append(std::to_wstring(static_cast<int32_t>(severity)));
    output.append(L"\nHighRiskVirusType = ").append(types).append(L"\n");
}

bool MakeOneMessage(std::wstring& output, int32_t alertType, bool encode) {
    std::wstring message;
    output.clear();
    if (!cmdhm_GetClnAlertMsgIni(message, wrb::FindAlertFile(alertType).name)) {
        return false;
    }
    if (encode) {
        AppendEncoded(output, message);
    } else {
        output = message;
    }
    return true;
}

}  // namespace

bool cmdhm_GetClnAlertMsgIni(std::wstring& output, const wchar_t* fileName) {
    output.clear();
    const wrb::CancelAfter limit(kFileMilliseconds);
    return limit && ReadMessageFile(output, wrb::HomeFolder(), fileName);
}

bool wrb::MakeAlertSection(std::wstring& output) {
    AlertMessages messages;
    const bool anyRead = ReadMessageFiles(messages);
    std::size_t characters = 0;
    for (const std::wstring& message : messages) {
        characters += message.size();
    }
    output.clear();
    output.reserve(characters * 3 + 4096);  // each character becomes at most three
    output = L"[Alert Message]\n";
    for (const std::size_t i : kAlertsBeforeSettings) {
        AppendMessage(output, kAlertFiles[i], messages[i]);
    }
    AppendSettings(output);
    AppendMessage(output, kAlertFiles[kAlertAfterSettings], messages[kAlertAfterSettings]);
    return anyRead;
}

int cmdhm_GetClnAlertMsg(std::wstring& output, const wchar_t* uid, int32_t alertType, int encode) {
    WRB_LOG(kLogInfo, L"cmdhm_GetClnAlertMsg enter %d", alertType);
    const bool isRead =
        alertType == kAllAlertMessages ? wrb::MakeAlertSection(output) : MakeOneMessage(output, alertType, encode != 0);
    if (isRead) {
        dbSetConfFlagW(uid, 0, kAlertMessageBit, 0);
    }
    const int result = isRead ? 1 : 0;
    WRB_LOG(kLogInfo, L"cmdhl_GetClnAlertMsg exit %d", result);
    return result;
}
