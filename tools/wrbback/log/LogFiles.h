// The files of the debug log: one that is written, and older ones beside it.
//
//   FOLDER\NAME.log          the current file
//   FOLDER\NAME.000001.log   and so on: finished ones; a higher number is a later file
//
// After 999999 the files that are left are numbered from 1 again, in their order.
//
// A line that would take the current file past the split size finishes it first: the file gets the next number. Then
// the finished files with the lowest numbers are deleted until, with the current one, no more than the largest count
// are left. Nothing else in the folder is touched. Lines are not written while the disk is short of space.
//
// Each line is one write to the file, so that it is there when the process ends, and other programs may read meanwhile.
// Any thread.
#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Handle.h"
#include "SRWLock.h"

namespace wrb {

struct DiskSpace {
    uint64_t available = 0;  // bytes
    uint64_t total = 0;
};

struct LogFileOptions {
    std::wstring folder = L".\\Log\\";
    std::wstring name = L"wrbdebug";                                 // of the files, without number and extension
    uint64_t splitBytes = 104'857'600;                               // 0: no limit
    unsigned maxFiles = 10;                                          // with the current one; 0: no limit
    unsigned reservePercent = 1;                                     // of the disk, and
    uint64_t reserveBytes = 20'480 * 1024;                           // in bytes: what must stay free; the larger counts
    std::function<DiskSpace(const std::wstring& folder)> diskSpace;  // empty: the system's
};

enum class LogWriteResult { Written, NoSpace, Failed };  // Failed: GetLastError tells

class LogFiles {
  public:
    explicit LogFiles(LogFileOptions options);

    LogWriteResult Write(std::string_view line);

  private:
    bool HasSpace() WRB_REQUIRES(m_lock);
    bool Open() WRB_REQUIRES(m_lock);
    void Split() WRB_REQUIRES(m_lock);
    void NumberAnew(std::vector<uint64_t>& numbers) const;
    std::wstring CurrentPath() const;
    std::wstring FinishedPath(uint64_t number) const;

    const LogFileOptions m_options;
    CWrbSRWLock m_lock;
    FileHandle m_file WRB_GUARDED_BY(m_lock);
    uint64_t m_size WRB_GUARDED_BY(m_lock) = 0;
    uint64_t m_splitAt WRB_GUARDED_BY(m_lock);              // bytes
    uint64_t m_sinceSpaceCheck WRB_GUARDED_BY(m_lock) = 0;  // bytes
    bool m_hasSpace WRB_GUARDED_BY(m_lock) = false;
};

}  // namespace wrb
