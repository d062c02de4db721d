// The log service for tests: receives the debug-log lines of this process and takes them apart.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "FakePipeService.h"

namespace wrb::test {

struct tagLogMessage {
    std::wstring command;
    int32_t seconds = 0;
    uint32_t process = 0;
    uint32_t thread = 0;
    uint32_t level = 0;
    std::wstring sourceFile;
    uint32_t line = 0;
    std::wstring text;  // with its "[tag][program]"
};

// Serves "Log_ServerNamePipe", of which there is one on a machine: a test that uses it is registered as SERIAL.
class CFakeLogService {
  public:
    // Also sets the process's debug log up with that module tag; the destructor switches it off again.
    explicit CFakeLogService(const char* moduleTag = "TEST");
    ~CFakeLogService();

    // The lines that this thread has written since the last call, in their order; other threads' as far as they have
    // arrived. Each as it was on the pipe.
    std::vector<tagLogMessage> TakeLines();

    // Their texts without the "[tag][program]", and without the marks of this fixture.
    std::vector<std::wstring> TakeTexts();

  private:
    CFakePipeService m_pipe;
    std::size_t m_taken = 0;
};

}  // namespace wrb::test
