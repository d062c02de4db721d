#include "ServerFiles.h"

#include <windows.h>

#include <chrono>
#include <filesystem>
#include <system_error>

#include "CounterSection.h"
#include "Handle.h"
#include "HomeFolder.h"
#include "LogLevel.h"
#include "MailFolder.h"
#include "ProtectionKeyFile.h"
#include "SpillDirectory.h"
#include "Text.h"

namespace wrb {
namespace {

namespace fs = std::filesystem;

StatusItem Item(const char* name, Health health, std::string text) {
    return {.name = name, .health = health, .text = std::move(text), .details = Json::Value(Json::objectValue)};
}

// Whether the server INI gives the key a value.
bool HasServerKey(const std::wstring& home, const wchar_t* key) {
    wchar_t first[2];
    return GetPrivateProfileStringW(kProtectionKeySection, key, L"", first, 2, (home + kServerIniFile).c_str()) != 0;
}

StatusItem CheckIni(const std::wstring& home, const wchar_t* file, int64_t cachedSeconds) {
    const fs::path path = fs::path(home) / file;
    std::error_code error;
    const auto size = fs::file_size(path, error);
    StatusItem item = Item("", Health::Good, "");
    item.name = WideToUtf8(file);
    item.details["path"] = WideToUtf8(path.wstring());
    if (error) {
        item.health = Health::Warning;
        item.text = "missing: its defaults apply (" + WideToUtf8(path.wstring()) + ")";
        return item;
    }
    const auto age = std::chrono::duration_cast<std::chrono::seconds>(fs::file_time_type::clock::now() -
                                                                      fs::last_write_time(path, error))
                         .count();
    item.text = std::to_string(size) + " bytes, written " + DurationText(age) + " ago, cached for " +
                std::to_string(cachedSeconds) + " s";
    item.text += age <= cachedSeconds ? "; the host may not have seen the change yet" : "";
    item.details["bytes"] = static_cast<Json::UInt64>(size);
    item.details["ageSeconds"] = static_cast<Json::Int64>(age);
    item.details["cachedSeconds"] = static_cast<Json::Int64>(cachedSeconds);
    return item;
}

Json::UInt64 FilesIn(const std::wstring& pattern) {
    WIN32_FIND_DATAW found{};
    Json::UInt64 count = 0;
    const SearchHandle search(FindFirstFileW(pattern.c_str(), &found));
    for (BOOL more = static_cast<bool>(search); more; more = FindNextFileW(search.Get(), &found)) {
        ++count;
    }
    return count;
}

}  // namespace

StatusItem CheckHome(const std::wstring& home) {
    if (home.empty()) {
        return Item("home folder", Health::Down,
                    "none: the registry value Local_Path and the program's folder are too long");
    }
    std::wstring installed = ReadLocalPath();
    const bool isInstalled = !installed.empty() && home.starts_with(installed);
    StatusItem item = Item("home folder", Health::Good, "");
    item.text =
        WideToUtf8(home) + (isInstalled ? ", from the registry value Local_Path" : ", the folder of this program");
    item.details["folder"] = WideToUtf8(home);
    item.details["fromRegistry"] = isInstalled;
    if (!isInstalled && HasLocalPath()) {
        item.health = Health::Warning;
        item.text += "; the registry value Local_Path is no text of 1 to " + std::to_string(kHomeFolderCapacity - 2) +
                     " characters";
    }
    std::error_code error;
    if (!fs::is_directory(home, error)) {
        item.health = Health::Warning;
        item.text += "; it does not exist";
    }
    return item;
}

StatusItems CheckInis(const std::wstring& home) {
    return {CheckIni(home, kScanIniFile, 6), CheckIni(home, kServerIniFile, 6),
            CheckIni(home, L"Private\\wrbSbaSvr.ini", 30)};
}

StatusItem CheckKey(const std::wstring& home) {
    if (ReadProtectionKey(home + kServerIniFile)) {
        return Item("protection key", Health::Good, "there");
    }
    const bool isWrong = HasServerKey(home, kProtectionKeyName);
    return Item("protection key", Health::Warning,
                std::string(isWrong ? "not 64 hexadecimal digits" : "missing") +
                    ": agents with addresses get no web-threat settings; make one with wrbctl make-key" +
                    (isWrong ? " --force" : ""));
}

StatusItem CheckUploads(const std::wstring& home) {
    const fs::path folder = fs::path(home) / L"Upload";
    std::error_code error;
    const bool isThere = fs::is_directory(folder, error);
    const bool isGood = isThere || HasServerKey(home, L"UploadFolders");
    return Item("upload folder", isGood ? Health::Good : Health::Warning,
                WideToUtf8(folder.wstring()) + (isThere  ? ""
                                                : isGood ? " is missing; UploadFolders names others"
                                                         : " is missing: every upload is refused; make it"));
}

StatusItem CheckCounters() {
    CounterReader reader;
    uint32_t error = 0;
    if (const CounterAttach result = reader.Attach(error); result != CounterAttach::Attached) {
        return Item("counters", Health::Warning, WideToUtf8(CounterAttachText(result)));
    }
    const Undelivered lost = reader.Undelivered();
    StatusItem item = Item("counters", Health::Good, "attached");
    if (lost.rows != 0 || lost.events != 0) {
        item.health = Health::Warning;
        item.text =
            "not handed over: " + std::to_string(lost.rows) + " log rows, " + std::to_string(lost.events) + " events";
    }
    item.details["callsInProgress"] = reader.CallsInProgress();
    item.details["undeliveredRows"] = lost.rows;
    item.details["undeliveredEvents"] = lost.events;
    return item;
}

StatusItem CheckLogLevel() {
    const uint32_t word = CurrentLogWord();
    const LogLevelRow* const row = LogLevelOfWord(word);
    StatusItem item = Item("log level", Health::Good, "a threshold of its own");
    if (row != nullptr) {
        item.text = std::string(row->level) + ": " + std::string(row->meaning);
    }
    item.details["word"] = word;
    return item;
}

StatusItem CheckSpillFolders() {
    StatusItem item = Item("spill folders", Health::Good, "");
    Json::Value& folders = item.details["folders"] = Json::Value(Json::arrayValue);
    for (const std::wstring& folder : SpillDirectories()) {
        std::error_code error;
        Json::Value row;
        row["folder"] = WideToUtf8(folder);
        row["exists"] = fs::is_directory(folder, error);
        row["files"] = FilesIn(folder + L"mst*.tmp");
        item.text +=
            (item.text.empty() ? "" : ", ") + WideToUtf8(folder) +
            (row["exists"].asBool() ? " (" + std::to_string(row["files"].asUInt64()) + " files)" : " (missing)");
        folders.append(std::move(row));
    }
    if (folders.empty() || !folders[0]["exists"].asBool()) {
        item.health = Health::Warning;
        item.text += "; make the first one, and give every account of the server the right to write there";
    }
    return item;
}

StatusItem CheckMails(const std::wstring& home) {
    const auto waiting = static_cast<Json::UInt64>(MailFolder(home).Waiting().size());
    const Json::UInt64 failed = FilesIn(home + L"Temp\\Mail\\*.failed");
    StatusItem item = Item("mails", failed == 0 ? Health::Good : Health::Warning,
                           std::to_string(waiting) + " waiting, " + std::to_string(failed) + " failed");
    item.details["waiting"] = waiting;
    item.details["failed"] = failed;
    return item;
}

}  // namespace wrb
