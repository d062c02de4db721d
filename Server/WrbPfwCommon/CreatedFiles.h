// The files and folders that one unpacking has made below its target folder.
#pragma once

#include <windows.h>

#include <string>
#include <utility>
#include <vector>

#include "Handle.h"

namespace wrb {

// Whether the path is a folder with none of the attributes `refused`. A link to a folder counts as one.
bool IsFolder(const std::wstring& path, DWORD refused = 0) noexcept;

// Removes what it has made when it is destroyed, newest first, unless told to keep it. Files must be closed by then.
class CreatedFiles {
  public:
    explicit CreatedFiles(std::wstring folder) : m_folder(std::move(folder)) {}
    ~CreatedFiles();
    CreatedFiles(const CreatedFiles&) = delete;
    CreatedFiles& operator=(const CreatedFiles&) = delete;

    // Makes a new file for writing, and the folders on the way to it. An empty owner when it exists already, when
    // something on the way is no folder or is a link, or when the system refuses.
    FileHandle Create(const std::wstring& relativePath);

    void Keep() noexcept { m_created.clear(); }

  private:
    struct Created {
        std::wstring path;
        bool isFolder;
    };

    bool MakeFolders(const std::wstring& relativePath);

    std::wstring m_folder;
    std::vector<Created> m_created;
};

}  // namespace wrb
