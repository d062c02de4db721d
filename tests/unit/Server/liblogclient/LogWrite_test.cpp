// The LOG_WRITE client by itself: the bytes of a message, and what it says when the service cannot be reached.
#include "logcl_command.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "DebugLog.h"
#include "FakePipeService.h"

namespace {

class CRecordingLog final : public wrb::IExternalLog {
  public:
    void Trace(const wchar_t*, uint32_t, uint32_t level, const wchar_t* text) const override {
        EXPECT_EQ(level, kLogError);
        m_texts.push_back(text);
    }

    std::vector<std::wstring> Take() const { return std::exchange(m_texts, {}); }

  private:
    mutable std::vector<std::wstring> m_texts;
};

constexpr tagLogLine kLine = {-1, 4'294'967'295u, 12, 68, L"a.cpp", 4'294'967'295u, L"[T][h]text"};

TEST(LogWrite, AMessageIsItsFieldsBetweenTabsAndATerminatingZero) {
    const wrb::test::CFakePipeService service(L"Log_ServerNamePipe");
    EXPECT_EQ(logcl_Write(kLine, nullptr), 1);
    const auto messages = service.WaitFor(1);
    ASSERT_EQ(messages.size(), 1u);
    const std::wstring expected = L"LOG_WRITE\t-1\t4294967295\t12\t68\ta.cpp\t-1\t[T][h]text";
    EXPECT_EQ(messages[0].bytes,
              std::string(reinterpret_cast<const char*>(expected.c_str()), (expected.size() + 1) * sizeof(wchar_t)));
}

TEST(LogWrite, AMissingServiceIsNotedOnceAndEveryOtherFailureEachTime) {
    static std::vector<std::wstring> notes;  // of the whole process, however often the test runs
    const CRecordingLog external;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(logcl_Write(kLine, &external), 0);
    }
    for (const std::wstring& text : external.Take()) {
        notes.push_back(text);
    }
    EXPECT_EQ(notes, std::vector<std::wstring>{L"Need to Start LogServer for turn on debug log."});

    // A service that takes no more clients.
    const wrb::CFileHandle pipe(CreateNamedPipeW(L"\\\\.\\pipe\\Log_ServerNamePipe", PIPE_ACCESS_DUPLEX,
                                                 PIPE_TYPE_MESSAGE, 1, 1024, 1024, 50, nullptr));
    const auto only = wrb::test::OpenPipeForWriting(L"Log_ServerNamePipe");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(logcl_Write(kLine, &external), 0);
        EXPECT_EQ(external.Take(), std::vector<std::wstring>{L"Initial pipe client failed! err=121"});
    }
}

}  // namespace
