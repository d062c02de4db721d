// What the server keeps on disk and in shared memory.
#pragma once

#include <string>

#include "StatusItem.h"

namespace wrb {

// The folder and where it was taken from. Down without one.
StatusItem CheckHome(const std::wstring& home);

// The three INI files: a missing one is a warning. With the age of each, and whether the host may still have what was
// in it before.
StatusItems CheckInis(const std::wstring& home);

// A warning without a valid protection key.
StatusItem CheckKey(const std::wstring& home);

// The folder that agents' packages are put into. A warning when it is missing.
StatusItem CheckUploads(const std::wstring& home);

// A warning when they cannot be read, or when rows or events of agents were lost.
StatusItem CheckCounters();

StatusItem CheckLogLevel();

// The folders of large messages, and the files in them. A warning when the first one is missing.
StatusItem CheckSpillFolders();

// A warning when mails have failed.
StatusItem CheckMails(const std::wstring& home);

}  // namespace wrb
