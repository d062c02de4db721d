// What the account of a service may do in a folder.
#pragma once

#include <cstdint>
#include <string>

namespace wrb {

enum class FolderRight { Read, Change };

// Adds the right, for the folder and all that it holds, to what others may do there. `sid` is a SID as text. Returns 0
// or the Windows error.
uint32_t GrantFolder(const std::wstring& folder, const std::wstring& sid, FolderRight right);

// Makes the folder so that SYSTEM and the administrators may do everything in it and nobody else may do anything.
// Returns 0 or the Windows error, ERROR_ALREADY_EXISTS for a folder that is there.
uint32_t MakePrivateFolder(const std::wstring& folder);

}  // namespace wrb
