#include "cgi_PutStream.h"

#include <gtest/gtest.h>

#include "Handle.h"
#include "TempFolder.h"

namespace {

// Standard output is a file for as long as this lives.
class CapturedOutput {
  public:
    CapturedOutput() { SetStdHandle(STD_OUTPUT_HANDLE, m_file.Get()); }
    ~CapturedOutput() { SetStdHandle(STD_OUTPUT_HANDLE, m_before); }
    std::string Text() const { return wrb::test::ReadAll(m_folder / L"out"); }

  private:
    wrb::test::TempFolder m_folder;
    const HANDLE m_before = GetStdHandle(STD_OUTPUT_HANDLE);
    wrb::FileHandle m_file{CreateFileW((m_folder / L"out").c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                       CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)};
};

TEST(PutStream, WritesUtf8AndBytesAsTheyAre) {
    const CapturedOutput output;
    CPutStream(false) << "n\r\n"
                      << -2147483647 - 1 << L"\u00e4\xD800" << static_cast<const char*>(nullptr)
                      << static_cast<const wchar_t*>(nullptr);
    CPutStream out(true);
    out.Send(L"<&>", false);
    out.Send(L"<&>\"'\u00e4", true);
    out.Send(reinterpret_cast<const unsigned char*>("\0\xff---"), 2);
    out.Send(nullptr, -1);
    using namespace std::string_literals;
    EXPECT_EQ(output.Text(), "n\r\n-2147483648\xC3\xA4\xEF\xBF\xBD<&>&lt;&amp;&gt;&quot;&#39;\xC3\xA4\0\xff"s);
}

TEST(PutStream, WritesWhenTheHeaderSaysSo) {
    const CapturedOutput output;
    CPutStream collecting(false);
    collecting << "a";
    EXPECT_EQ(output.Text(), "");
    collecting << flush << "b";
    EXPECT_EQ(output.Text(), "a");
    collecting << endl;
    EXPECT_EQ(output.Text(), "ab\n");
    CPutStream writingThrough(true);
    writingThrough << 4;
    EXPECT_EQ(output.Text(), "ab\n4");
    const std::string large(40000, 'x');
    collecting << large.c_str();
    EXPECT_EQ(output.Text().size(), 4u + 2 * 16384u);
}

TEST(PutStream, SwallowsWhatNobodyReads) {
    const CapturedOutput output;
    const HANDLE file = GetStdHandle(STD_OUTPUT_HANDLE);
    SetStdHandle(STD_OUTPUT_HANDLE, nullptr);
    CPutStream(true) << "lost" << endl;
    SetStdHandle(STD_OUTPUT_HANDLE, file);
    CPutStream(true) << "seen";
    EXPECT_EQ(output.Text(), "seen");
}

}  // namespace
