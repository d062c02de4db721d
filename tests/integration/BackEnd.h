// wrbback, seeded and serving, for the tests of one suite.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "TempFolder.h"

namespace wrb::test {

// In the file that BackEnd.cpp writes: one agent with everything, one without a configuration, eight for threads.
inline constexpr wchar_t kFullAgent[] = L"3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3";
inline constexpr wchar_t kBareAgent[] = L"c07b15d8-94ea-4b36-a2f7-1e6d80395fac";
inline constexpr wchar_t kUnknownAgent[] = L"e5a9308d-6b74-4c12-9f0e-b3d8127a4c61";
std::wstring ThreadAgent(unsigned thread);

class CBackEnd {
  public:
    explicit CBackEnd(std::vector<std::wstring> moreArguments = {});  // throws when it does not get ready
    ~CBackEnd();

    // Stops it; what it has printed. Once.
    std::string Stop();

    std::wstring Database() const { return (m_folder / L"agents.db").wstring(); }
    std::string Log() const { return ReadAll(m_folder / L"log\\wrbdebug.log"); }
    bool WaitForLog(const std::string& part) const;

  private:
    CTempFolder m_folder;
    std::unique_ptr<CChildProcess> m_process;
};

// Runs wrbback to its end; the exit code.
struct tagRun {
    DWORD code = 0;
    std::string output;
};
tagRun RunBackEnd(const std::vector<std::wstring>& arguments);

}  // namespace wrb::test
