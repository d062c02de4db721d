#include "CreatedFiles.h"

#include "CancelAfter.h"

namespace wrb {
namespace {

// A link, of whatever kind, could lead out of the target folder.
constexpr DWORD kLink = FILE_ATTRIBUTE_REPARSE_POINT;

constexpr uint32_t kDeleteMilliseconds = 10'000;  // whoever holds an oplock on a file decides how long it takes

}  // namespace

bool IsFolder(const std::wstring& path, DWORD refused) noexcept {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & (FILE_ATTRIBUTE_DIRECTORY | refused)) == FILE_ATTRIBUTE_DIRECTORY;
}

CreatedFiles::~CreatedFiles() {
    if (m_created.empty()) {
        return;
    }
    const CancelAfter limit(kDeleteMilliseconds);
    for (auto created = m_created.rbegin(); created != m_created.rend(); ++created) {
        if (created->isFolder) {
            RemoveDirectoryW(created->path.c_str());
        } else {
            DeleteFileW(created->path.c_str());
        }
    }
}

bool CreatedFiles::MakeFolders(const std::wstring& relativePath) {
    for (std::size_t end = relativePath.find(L'\\'); end != std::wstring::npos;
         end = relativePath.find(L'\\', end + 1)) {
        // Remembered before it is made, so that lack of memory leaves no folder.
        m_created.push_back({m_folder + L"\\" + relativePath.substr(0, end), true});
        const std::wstring& path = m_created.back().path;
        if (CreateDirectoryW(path.c_str(), nullptr)) {
            continue;
        }
        const bool isThere = IsFolder(path, kLink);
        m_created.pop_back();
        if (!isThere) {
            return false;
        }
    }
    return true;
}

FileHandle CreatedFiles::Create(const std::wstring& relativePath) {
    if (!MakeFolders(relativePath)) {
        return {};
    }
    m_created.push_back({m_folder + L"\\" + relativePath, false});
    FileHandle file(CreateFileW(m_created.back().path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        m_created.pop_back();
    }
    return file;
}

}  // namespace wrb
