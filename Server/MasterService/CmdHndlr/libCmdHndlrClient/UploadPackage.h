// Packages that agents upload, and the folders into which they are unpacked.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "PackageLibrary.h"
#include "UploadFile.h"

namespace wrb {

// The folder of one request: `base`, then the reply pipe's name without its first `skip` characters, which makes it
// unique. Throws std::out_of_range when the name is shorter than `skip`: the request ends without an answer, and
// cmdhl_Process throws.
std::wstring ExtractionDirectory(std::wstring_view base, std::wstring_view replyPipe, std::size_t skip);

// A package and its folder, held open until they are deleted or the object goes. So nobody puts others in their place
// between check, unpacking and deletion. One thread.
class UploadPackage {
  public:
    // Opens the package and makes the folder, which may exist already. When one of them lies where uploads may not
    // (UploadFile.h), one line at level 'W' says so in the name of `handler`, and nothing is made, unpacked or deleted.
    UploadPackage(const wchar_t* handler, const std::wstring& package, const std::wstring& folder);

    bool IsRefused() const noexcept { return m_package.refusal != nullptr || m_folder.refusal != nullptr; }

    // What making the folder gave: ERROR_SUCCESS only for a new one.
    DWORD FolderError() const noexcept { return m_folder.error; }
    const std::wstring& Folder() const noexcept { return m_folder.path; }

    // Checks the package as thoroughly as unpacking it would, and writes nothing.
    bool Test() const;

    // As ExtractPackage. False also when the package or the folder could not be opened.
    bool Unpack(PackageCallback callback, void* context) const;

    // Each returns the system's error code.
    DWORD Delete() noexcept { return DeleteOpened(m_package); }
    DWORD RemoveFolder() noexcept { return DeleteOpened(m_folder); }

    // Leaves the folder to others.
    void CloseFolder() noexcept { m_folder.handle.Reset(); }

  private:
    UploadFile m_package;
    UploadFile m_folder;
};

// Removes the empty folders between `directory`, which stays, and `entry`, deepest first. Both are as a callback gets
// them.
void RemoveEntryFolders(const char* directory, const char* entry);

}  // namespace wrb
