#include "SpillFile.h"

#include <windows.h>

#include <sddl.h>

#include <filesystem>

#include "Handle.h"
#include "SpillDirectory.h"

namespace wrb {
std::unique_ptr<CSpillFile> CSpillFile::Create() {
    std::wstring path = CreateFileInSpillDirectory();
    if (path.empty()) {
        return nullptr;
    }
    std::unique_ptr<CSpillFile> file(new CSpillFile(std::move(path)));
    return file->m_stream.is_open() ? std::move(file) : nullptr;
}

CSpillFile::CSpillFile(std::wstring path)
    : m_path(std::move(path)), m_stream(std::filesystem::path(m_path), std::ios::binary | std::ios::trunc) {}

CSpillFile::~CSpillFile() {
    m_stream.close();
    if (m_deleteFile) {
        DeleteFileW(m_path.c_str());
    }
}

void CSpillFile::Write(const void* bytes, uint32_t count) {
    m_stream.write(static_cast<const char*>(bytes), count);
}

bool CSpillFile::Close() {
    m_stream.close();
    return !m_stream.fail();
}

bool CSpillFile::OpenToReceivers() const {
    CLocalMemory descriptor;
    return ConvertStringSecurityDescriptorToSecurityDescriptorW(kReceiverAccess, SDDL_REVISION_1, descriptor.Receive(),
                                                                nullptr) != FALSE &&
           SetFileSecurityW(m_path.c_str(), DACL_SECURITY_INFORMATION, descriptor.Get()) != FALSE;
}

}  // namespace wrb
