#include "SpillFile.h"

#include <windows.h>

#include <sddl.h>

#include <filesystem>

#include "CancelAfter.h"
#include "Handle.h"
#include "LastError.h"
#include "SpillDirectory.h"

namespace wrb {
std::unique_ptr<SpillFile> SpillFile::Create() {
    std::unique_ptr<SpillFile> file(new SpillFile);  // first, so that there is always an owner of what is created
    const CancelAfter limit(kSpillFileMilliseconds);
    file->m_path = CreateFileInSpillDirectory();
    if (file->m_path.empty()) {
        return nullptr;
    }
    file->m_stream.open(std::filesystem::path(file->m_path), std::ios::binary | std::ios::trunc);
    return file->m_stream.is_open() ? std::move(file) : nullptr;
}

SpillFile::~SpillFile() {
    const KeepLastError keep;
    m_stream.close();
    if (m_deleteFile && !m_path.empty()) {
        DeleteSpillFile(m_path);
    }
}

void SpillFile::Write(const void* bytes, uint32_t count) {
    m_stream.write(static_cast<const char*>(bytes), count);
}

bool SpillFile::Close() {
    m_stream.close();
    return !m_stream.fail();
}

bool SpillFile::OpenToReceivers() const {
    LocalMemory descriptor;
    const CancelAfter limit(kSpillFileMilliseconds);
    return ConvertStringSecurityDescriptorToSecurityDescriptorW(kReceiverAccess, SDDL_REVISION_1, descriptor.Receive(),
                                                                nullptr) != FALSE &&
           SetFileSecurityW(m_path.c_str(), DACL_SECURITY_INFORMATION, descriptor.Get()) != FALSE;
}

}  // namespace wrb
