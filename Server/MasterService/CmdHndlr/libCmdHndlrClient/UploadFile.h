// The files and folders that an upload names: opened once, and only where uploads may lie.
//
// A path is refused unless it is on a drive of this machine, is no link, and lies below the folder "Upload" of the home
// folder or below one of the server INI's "INI_SERVER_SECTION/UploadFolders". In the home folder only "Upload" counts,
// whatever that list says. What decides is the path that the system gives for the open handle; the text alone only
// keeps devices, pipes and other machines from being opened. Any thread.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "Handle.h"

namespace wrb {

// How long each of the functions below may take, and other uses of an upload's files: another process can hold them up
// with an oplock. A call that is not done by then fails with ERROR_OPERATION_ABORTED (995).
inline constexpr uint32_t kUploadFileMilliseconds = 10'000;

struct UploadFile {
    FileHandle handle;                 // empty when it could not be opened, and when it is refused
    DWORD error = ERROR_SUCCESS;       // of the system
    const wchar_t* refusal = nullptr;  // the reason, for the log
    std::wstring path;                 // of a folder, without links
};

// A package for reading and deleting. Nobody can write, rename or delete it while it is open.
UploadFile OpenUploadedPackage(const std::wstring& path);

// Makes the folder `path` in an existing one, or opens the one that is there: `error` is then ERROR_ALREADY_EXISTS.
// Nobody can rename or delete it while it is open.
UploadFile MakeUploadFolder(const std::wstring& path);

// Deletes what was opened, by its handle, and closes it. A folder must be empty. The system's error code, or that of
// the open that failed.
DWORD DeleteOpened(UploadFile& file) noexcept;

}  // namespace wrb
