#include <windows.h>

#include <wincrypt.h>

#include <array>
#include <string>
#include <vector>

#include "AlertFiles.h"
#include "BarePipe.h"
#include "Handle.h"
#include "HomeFolder.h"
#include "PipeFixture.h"
#include "Ratio.h"
#include "SampleAgent.h"
#include "cmdhl.h"
#include "cmdhm_ClnAlertMsg.h"

namespace wrb::bench {
namespace {

constexpr std::size_t kCharacters = 600;  // of a typical text
constexpr std::size_t kPiece = 1024;

// Missing files are made; files of an installed server stay as they are.
const std::vector<std::wstring>& AlertPaths() {
    static const std::vector<std::wstring> paths = [] {
        const std::wstring folder = wrb::HomeFolder() + L"admin\\";
        CreateDirectoryW(folder.c_str(), nullptr);
        const std::wstring text(kCharacters, L'x');
        std::vector<std::wstring> made;
        for (const AlertFile& file : kAlertFiles) {
            made.push_back(folder + file.name);
            const FileHandle handle(CreateFileW(made.back().c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                                FILE_ATTRIBUTE_NORMAL, nullptr));
            DWORD written = 0;
            if (handle) {
                WriteFile(handle.Get(), text.data(), kCharacters * sizeof(wchar_t), &written, nullptr);
            }
        }
        return made;
    }();
    return paths;
}

std::size_t ReadAndEncode(const std::wstring& path) {
    std::array<BYTE, 4096> bytes;
    std::array<wchar_t, 6144> encoded;
    DWORD count = 0;
    auto characters = static_cast<DWORD>(encoded.size());
    const HANDLE file = CreateFileW(path.c_str(), FILE_READ_DATA, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
    CloseHandle(file);
    CryptBinaryToStringW(bytes.data(), count, CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF, encoded.data(), &characters);
    benchmark::DoNotOptimize(encoded.data());
    return characters;
}

bool ReadAndEncodeAll() {
    bool isWhole = true;
    for (const std::wstring& path : AlertPaths()) {
        isWhole &= ReadAndEncode(path) > 0;
    }
    return isWhole;
}

void Section(benchmark::State& state) {
    AlertPaths();
    for (auto _ : state) {
        std::wstring text;
        if (!MakeAlertSection(text)) {
            state.SkipWithError("no home folder");
        }
        benchmark::DoNotOptimize(text.data());
    }
}

void BareSection(benchmark::State& state) {
    for (auto _ : state) {
        if (!ReadAndEncodeAll()) {
            state.SkipWithError("a file could not be read");
        }
    }
}

void Request(benchmark::State& state) {
    AlertPaths();
    NeedSink();
    NeedDatabase();
    const std::wstring message =
        std::wstring(L"CMDHL_CMDHL_GET_CLN_ALERT_MSG\t") + kSinkPipe + L"\t" + kSampleUid + L"\t128";
    for (auto _ : state) {
        if (cmdhl_Process(message.data(), message.size() * sizeof(wchar_t)) != 1) {
            state.SkipWithError("no handler ran");
        }
    }
}

void BareRequest(benchmark::State& state) {
    NeedSink();
    NeedDatabase();
    const std::string request = DatabaseRequest(std::wstring(L"DB_SET_CONF_FLAG\t-1\t") + kSampleUid + L"\t0\t32\t0");
    std::wstring section;
    MakeAlertSection(section);
    const std::string answer(reinterpret_cast<const char*>(section.data()), section.size() * sizeof(wchar_t));
    for (auto _ : state) {
        if (!ReadAndEncodeAll() || !BareSend(kDbPipe, request) || !BareSend(kSinkPipe, answer, kPiece)) {
            state.SkipWithError("the floor's work failed");
        }
    }
}

}  // namespace

void AddAlertBenchmarks() {
    AddRatio("thirteen alert texts", Section, "read and encode each file once", BareSection, Goal::AtMost, 1.5);
    AddRatio("thirteen alert texts, whole request", Request, "the same, and two bare messages in pieces", BareRequest,
             Goal::AtMost, 1.5);
}

}  // namespace wrb::bench
