// SQLite's file layer, failing when it is told to. While the object lives, the files of this process go through it.
#pragma once

#include <sqlite3.h>

namespace wrb::test {

class FaultyDisk {
  public:
    FaultyDisk();
    ~FaultyDisk();
    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

    // The call after `calls` more reads, writes and the like fails with `code`, and with `forGood` all that follow.
    void FailAfter(int calls, int code, bool forGood = false);
    bool Work();  // from now on; true: a call has failed
};

}  // namespace wrb::test
