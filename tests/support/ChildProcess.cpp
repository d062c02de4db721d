#include "ChildProcess.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "UniqueName.h"

namespace wrb::test {
namespace {

CFileHandle CreateOutputFile(const std::wstring& path) {
    SECURITY_ATTRIBUTES inheritable{sizeof(inheritable), nullptr, TRUE};
    return CFileHandle(CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                                   CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// The one handle that a child gets. It would otherwise also get, and keep open, any file that another thread of ours
// has open at that moment: the C runtime's files can be inherited.
class CInheritedHandle {
  public:
    explicit CInheritedHandle(HANDLE handle) : m_handle(handle) {
        SIZE_T bytes = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &bytes);
        m_room.resize(bytes);
        if (!InitializeProcThreadAttributeList(List(), 1, 0, &bytes) ||
            !UpdateProcThreadAttribute(List(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, &m_handle, sizeof m_handle,
                                       nullptr, nullptr)) {
            throw std::runtime_error("cannot list the child's handles, error " + std::to_string(GetLastError()));
        }
    }
    ~CInheritedHandle() { DeleteProcThreadAttributeList(List()); }
    CInheritedHandle(const CInheritedHandle&) = delete;
    CInheritedHandle& operator=(const CInheritedHandle&) = delete;

    LPPROC_THREAD_ATTRIBUTE_LIST List() const {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(const_cast<char*>(m_room.data()));
    }

  private:
    HANDLE m_handle;  // the list refers to it
    std::vector<char> m_room;
};

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

CChildProcess::CChildProcess(const std::wstring& program, const std::vector<std::wstring>& arguments)
    : m_outputPath((std::filesystem::temp_directory_path() / UniqueName(L"child")).wstring()) {
    const CFileHandle output = CreateOutputFile(m_outputPath);
    const CInheritedHandle inherited(output.Get());
    STARTUPINFOEXW startup{};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdOutput = output.Get();
    startup.StartupInfo.hStdError = output.Get();
    startup.lpAttributeList = inherited.List();
    std::wstring line = CommandLine(ProgramFolder() + program, arguments);
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr,
                        &startup.StartupInfo, &process)) {
        throw std::runtime_error("cannot start the program, error " + std::to_string(GetLastError()));
    }
    CloseHandle(process.hThread);
    m_process.Reset(process.hProcess);
}

CChildProcess::~CChildProcess() {
    TerminateProcess(m_process.Get(), 99);
    WaitForSingleObject(m_process.Get(), 10'000);
    std::error_code ignored;
    std::filesystem::remove(m_outputPath, ignored);
}

std::optional<DWORD> CChildProcess::WaitForExit(std::chrono::milliseconds timeout) const {
    DWORD code = 0;
    if (WaitForSingleObject(m_process.Get(), static_cast<DWORD>(timeout.count())) != WAIT_OBJECT_0 ||
        !GetExitCodeProcess(m_process.Get(), &code)) {
        return std::nullopt;
    }
    return code;
}

std::string CChildProcess::Output() const {
    std::ifstream file(std::filesystem::path(m_outputPath), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool CChildProcess::WaitForOutput(const std::string& part, std::chrono::milliseconds timeout) const {
    const auto end = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        // Asked before the look at the output: what an ended program printed is all there.
        const bool ended = WaitForExit(std::chrono::milliseconds(0)).has_value();
        if (Output().find(part) != std::string::npos) {
            return true;
        }
        if (ended || std::chrono::steady_clock::now() >= end) {
            return false;
        }
        Sleep(20);
    }
}

}  // namespace wrb::test
