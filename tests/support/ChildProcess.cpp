#include "ChildProcess.h"

#include <stdexcept>

#include "TempFolder.h"

namespace wrb::test {
namespace {

// Good for arguments without quotes and without a backslash at the end, which is all that tests use.
std::wstring CommandLine(const std::wstring& program, const std::vector<std::wstring>& arguments) {
    std::wstring line = L"\"" + program + L"\"";
    for (const std::wstring& argument : arguments) {
        line += L" \"" + argument + L"\"";
    }
    return line;
}

}  // namespace

std::wstring ProgramFolder() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.rfind(L'\\') + 1);
}

ChildProcess::ChildProcess(const std::wstring& program, const std::vector<std::wstring>& arguments, HANDLE output)
    : m_outputPath((std::filesystem::temp_directory_path() / UniqueName(L"child")).wstring()) {
    SECURITY_ATTRIBUTES inheritable{sizeof(inheritable), nullptr, TRUE};
    const FileHandle file(CreateFileW(m_outputPath.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      &inheritable, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    // The only handle that the child inherits. Without this list it would also keep open every file that another thread
    // has open at that moment: the C runtime's files can be inherited.
    HANDLE inherited = output != nullptr ? output : file.Get();
    SIZE_T bytes = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &bytes);
    std::vector<char> room(bytes);
    STARTUPINFOEXW startup{};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdOutput = startup.StartupInfo.hStdError = inherited;
    startup.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(room.data());
    std::wstring line = CommandLine(ProgramFolder() + program, arguments);
    PROCESS_INFORMATION process{};
    if (!InitializeProcThreadAttributeList(startup.lpAttributeList, 1, 0, &bytes) ||
        !UpdateProcThreadAttribute(startup.lpAttributeList, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, &inherited,
                                   sizeof inherited, nullptr, nullptr) ||
        !CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr,
                        &startup.StartupInfo, &process)) {
        throw std::runtime_error("cannot start the program, error " + std::to_string(GetLastError()));
    }
    DeleteProcThreadAttributeList(startup.lpAttributeList);
    CloseHandle(process.hThread);
    m_process.Reset(process.hProcess);
}

ChildProcess::~ChildProcess() {
    TerminateProcess(m_process.Get(), 99);
    WaitForSingleObject(m_process.Get(), 10'000);
    DeleteFileW(m_outputPath.c_str());
}

std::optional<DWORD> ChildProcess::WaitForExit(std::chrono::milliseconds timeout) const {
    DWORD code = 0;
    if (WaitForSingleObject(m_process.Get(), static_cast<DWORD>(timeout.count())) != WAIT_OBJECT_0 ||
        !GetExitCodeProcess(m_process.Get(), &code)) {
        return std::nullopt;
    }
    return code;
}

std::string ChildProcess::Output() const {
    return ReadAll(m_outputPath);
}

bool ChildProcess::WaitForOutput(const std::string& part, std::chrono::milliseconds timeout) const {
    const auto end = std::chrono::steady_clock::now() + timeout;
    for (bool last = false; Output().find(part) == std::string::npos;) {
        if (last) {
            return false;
        }
        // One more look: an ended program has printed everything.
        last = WaitForExit(std::chrono::milliseconds(20)).has_value() || std::chrono::steady_clock::now() >= end;
    }
    return true;
}

}  // namespace wrb::test
