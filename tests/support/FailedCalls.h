// Makes calls to the system fail. The addresses in the import table of the test program are replaced, so the code under
// test is that of a release. A DLL has a table of its own, which stays as it is.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

namespace wrb::test {

enum class FailsOn { ThisThread, OtherThreads };

class FailedCall {
  public:
    // While it exists, the `nth` call (from 1) of that function fails with kError on those threads. One at a time.
    // Throws std::invalid_argument for a function that cannot be made to fail; FailedCalls.cpp lists those that can.
    FailedCall(const std::string& function, unsigned nth, FailsOn where);
    ~FailedCall();
    FailedCall(const FailedCall&) = delete;
    FailedCall& operator=(const FailedCall&) = delete;

    bool Happened() const;

    static constexpr DWORD kError = ERROR_NOT_ENOUGH_MEMORY;
};

// Runs `work` again and again: with the first call of the first function failing, the second, and so on until a run
// has no such call; then the next function. `check` runs after each, with nothing failing. All of that is done twice:
// the second time must not leave more handles or memory than the first. Returns how many calls failed.
unsigned FailEachCall(const std::vector<std::string>& functions, FailsOn where, const std::function<void()>& work,
                      const std::function<void()>& check);

}  // namespace wrb::test
