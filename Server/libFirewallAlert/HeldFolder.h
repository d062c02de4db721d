// A folder of the home folder in which files are deleted or sent, and which others can write to.
#pragma once

#include <cstdint>
#include <string>

#include "Handle.h"

namespace wrb {

// Holds the folder open: as long as the object lives, nobody can rename or delete the folder. A link in its place, or
// in that of a folder between it and the home folder, is refused with a line at level W, which is not
// repeated before another folder has been held.
class HeldFolder {
  public:
    // `home` is a full path with "\" at its end, or empty: then nothing is held. `name` is the path below it.
    HeldFolder(const std::wstring& home, const std::wstring& name);

    // 0: the folder is held; else the Windows error, ERROR_DIRECTORY for a folder that is refused.
    uint32_t Error() const noexcept { return m_error; }

  private:
    FileHandle m_folder;
    uint32_t m_error;
};

}  // namespace wrb
