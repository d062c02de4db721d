// The files that requests leave behind: in the folder "Temp" of the server's home folder, under random names, which no
// client chooses.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace wrb {

class UploadFolder {
  public:
    // An empty home folder takes no file.
    explicit UploadFolder(const std::wstring& homeFolder);

    // Creates a file that did not exist and writes the bytes into it. Returns its full path; empty, with a log line and
    // no file left, when that fails. The folder itself is created when it is missing.
    std::wstring Store(std::string_view bytes, const wchar_t* function) const;

    // The full path of the file that `name` means: the bare name of an upload, or its path in this folder. Anything
    // else, and so every file that is not an upload, gives an empty path. Looks at the text alone.
    std::wstring PathOf(std::wstring_view name) const;

  private:
    std::wstring CreatePath(uint32_t& error) const;  // empty, with the Windows error, when there can be none

    std::wstring m_folder;  // as it is put together with a name; empty: no folder
};

// Deletes the file; a failure is logged in the name of `function`.
bool DeleteUpload(const std::wstring& path, const wchar_t* function);

}  // namespace wrb
