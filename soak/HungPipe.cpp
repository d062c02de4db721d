#include "HungPipe.h"

#include <stdexcept>

#include "PipePath.h"
#include "SystemText.h"

namespace wrb::soak {
namespace {

constexpr DWORD kInstances = 4;
constexpr std::size_t kMostConnections = 256;  // more than a service has

std::wstring Path(const wchar_t* name) {
    wchar_t path[MAX_PATH];
    FormatPipePath(path, MAX_PATH, name);
    return path;
}

}  // namespace

HungPipe::HungPipe(const wchar_t* name) {
    for (DWORD i = 0; i < kInstances; ++i) {
        FileHandle pipe(CreateNamedPipeW(Path(name).c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                         PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, kInstances, kPipePieceBytes,
                                         kPipePieceBytes, 0, nullptr));
        if (!pipe) {
            throw std::runtime_error("a pipe's name is taken: " + SystemText(GetLastError()));
        }
        m_instances.push_back(std::move(pipe));
    }
}

SilentClients::SilentClients(const wchar_t* name) : m_path(Path(name)) {
    TakeFreeConnections();
}

void SilentClients::TakeFreeConnections() {
    while (m_connections.size() < kMostConnections) {
        FileHandle pipe(CreateFileW(m_path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        if (!pipe) {
            return;
        }
        m_connections.push_back(std::move(pipe));
    }
}

}  // namespace wrb::soak
