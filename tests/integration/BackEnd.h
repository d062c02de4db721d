// wrbback, seeded and serving, for the tests of one suite.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ExpectRun.h"
#include "Serializer.h"
#include "TempFolder.h"

namespace wrb::test {

inline constexpr wchar_t kBackEnd[] = L"wrbback.exe";

// Beside the sample agents: one with everything, in the place of theirs, and eight for threads. The bare one is theirs.
inline constexpr wchar_t kFullAgent[] = L"3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3";
inline constexpr wchar_t kBareAgent[] = L"c07b15d8-94ea-4b36-a2f7-1e6d80395fac";
inline constexpr wchar_t kUnknownAgent[] = L"e5a9308d-6b74-4c12-9f0e-b3d8127a4c61";
std::wstring ThreadAgent(unsigned thread);

class BackEnd {
  public:
    explicit BackEnd(std::vector<std::wstring> moreArguments = {});  // throws when it does not get ready
    ~BackEnd();

    // Stops it; what it has printed. Once.
    std::string Stop();

    // Until the only fault that is switched on has been applied.
    void WaitForFault() const;

    // Ends it with no warning.
    void Kill();

    // A file, or the address in the variable WRB_TEST_STORE.
    std::wstring Database() const;
    std::string Log() const { return ReadAll(m_folder / L"log\\wrbdebug.log"); }
    bool WaitForLog(const std::string& part) const;

  private:
    TempFolder m_folder;
    std::unique_ptr<ChildProcess> m_process;
};

// One connection with these bytes. A service that has seen enough may close before their end.
void SendBytes(const wchar_t* pipe, const std::string& bytes);
std::string BytesOf(const CSerializer& message);

}  // namespace wrb::test
