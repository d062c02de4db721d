// Messages that travel in a file: both sides in one process, with a home folder of the test's own.
#include <gmock/gmock.h>

#include "CapturedLog.h"
#include "IPCMsgBufferException.h"
#include "SampleRecord.h"
#include "ServerHome.h"

namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::Field;
using testing::HasSubstr;

constexpr std::size_t kFlagsOffset = 16;

class MessageFile : public testing::Test {
  protected:
    void SetUp() override {
        fs::create_directories(m_spill);
        TakeCapturedLog();
    }
    void TearDown() override { EXPECT_TRUE(fs::is_empty(m_spill)) << "a message left its file behind"; }

    fs::path OnlyFile() const {
        EXPECT_EQ(std::distance(fs::directory_iterator(m_spill), {}), 1);
        return fs::directory_iterator(m_spill)->path();
    }

    const wrb::test::CServerHome m_home;
    const fs::path m_spill = m_home / L"temp";
};

// What a sender puts on the pipe for a small message in file mode.
Bytes SentInFile() {
    CMsgSerializer message(L"DBV2_X", CMsgSerializer::kInFile);
    message << Sample();
    EXPECT_TRUE(message.Finalize());
    return BytesOf(message);
}

// A message that names any path at all.
Bytes Naming(const std::wstring& path) {
    CMsgSerializer message;
    message << path;
    Bytes bytes = BytesOf(message);
    bytes[kFlagsOffset] = 0x02;
    return bytes;
}

auto Logged(const std::wstring& text) {
    return Contains(Field(&tagCapturedLine::text, HasSubstr(text)));
}

void WriteFileOf(const fs::path& path, const Bytes& bytes) {
    wrb::test::WriteAll(path, std::string(bytes.begin(), bytes.end()));
}

TEST_F(MessageFile, ABufferSpillsAtTheFirstAppendAfterTwoMiB) {
    const Bytes bytes(0x200000, 0x5A);
    CIPCMsgBuffer buffer;
    buffer.Append(bytes.data(), 0x1FFFFF);
    EXPECT_EQ(buffer.Capacity(), 0x200000u);
    EXPECT_FALSE(buffer.InFileMode());
    buffer.Append(bytes.data(), 1);
    EXPECT_TRUE(buffer.InFileMode());
    EXPECT_EQ(buffer.Data(), nullptr);
    EXPECT_EQ(buffer.Size(), 0x200000u);
    EXPECT_THAT(TakeCapturedLog(),
                Logged(L"CAccBuffer::CreateFileModeFile - [File mode] File = " + OnlyFile().wstring()));
}

TEST_F(MessageFile, ALargeMessageArrivesWhole) {
    CMsgSerializer sender(L"DBV2_X");
    const std::wstring text(1000, L'\u00e9');
    for (uint32_t i = 0; i < 2000; ++i) {
        sender << i << text;
    }
    ASSERT_TRUE(sender.Finalize());
    const fs::path file = OnlyFile();
    const Bytes sent = BytesOf(sender);
    EXPECT_LT(sent.size(), 1000u);
    EXPECT_EQ(sent[kFlagsOffset], 0x02);

    CMsgSerializer receiver;
    ASSERT_TRUE(Load(receiver, sent));
    EXPECT_EQ(receiver.Id(), sender.Id());
    for (uint32_t i = 0; i < 2000; ++i) {
        uint32_t number = 0;
        std::wstring read;
        receiver >> number >> read;
        ASSERT_TRUE(number == i && read == text) << i;
    }
    receiver.Reset();
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(MessageFile, SizeDecidesBetweenReadingAndMapping) {
    for (const uint64_t size : {52428799, 52428800}) {
        const Bytes sent = SentInFile();
        fs::resize_file(OnlyFile(), size);
        CMsgSerializer receiver;
        ASSERT_TRUE(Load(receiver, sent)) << size;
        tagSampleRecord record;
        receiver >> record;
        EXPECT_EQ(record.items.size(), 2u);
        const std::wstring name = OnlyFile();
        EXPECT_THAT(TakeCapturedLog(),
                    Logged(size == 52428800 ? L"CMsgSerializer::ReadFile - Use memory mapped file to read: " + name
                                            : L"CMsgSerializer::ReadFile - [File mode] File name = " + name +
                                                  L", file size = 52428799"));
    }
}

TEST_F(MessageFile, TheFileOutlivesTheSenderButNotTheExchange) {
    CMsgSerializer(nullptr, CMsgSerializer::kInFile) << 1u;
    EXPECT_TRUE(fs::is_empty(m_spill)) << "never finalized";

    const Bytes sent = SentInFile();
    EXPECT_TRUE(fs::exists(OnlyFile())) << "sender gone";
    CMsgSerializer receiver;
    EXPECT_TRUE(Load(receiver, sent));
    EXPECT_TRUE(Load(receiver, BytesOf(CMsgSerializer())));
    EXPECT_TRUE(fs::is_empty(m_spill)) << "receiver has the next message";

    CMsgSerializer unanswered(nullptr, CMsgSerializer::kInFile);
    ASSERT_TRUE(unanswered.Finalize());
    ASSERT_TRUE(fs::exists(OnlyFile()));
    unanswered.DiscardSentFile();
    EXPECT_TRUE(fs::is_empty(m_spill));
}

TEST_F(MessageFile, OnlySpillFilesAreReadAndDeleted) {
    const Bytes sound = BytesOf(CMsgSerializer());
    const fs::path victims[] = {m_home / L"mst1.tmp", m_spill / L"secret.txt", m_spill / L"mstsecret.tmp",
                                m_spill / L"mst5.tmp", m_home / L"linked"};
    for (const fs::path& victim : victims) {
        WriteFileOf(victim, sound);
    }
    fs::create_directory(m_spill / L"mst2.tmp");
    const fs::path link = m_spill / L"mst3.tmp";
    fs::create_hard_link(victims[4], link);

    std::vector<std::wstring> paths{L"",
                                    L"mst1.tmp",
                                    L"\\\\localhost\\c$\\mst1.tmp",
                                    victims[0],
                                    victims[1],
                                    victims[2],
                                    L"\\\\?\\" + victims[0].wstring(),
                                    victims[3].wstring() + std::wstring(1, L'\0') + L"x"};
    for (const wchar_t* name :
         {L"mst2.tmp", L"mst3.tmp", L"mst4.tmp", L"..\\mst1.tmp", L"mst5.tmp:stream", L"mst?.tmp"}) {
        paths.push_back(m_spill / name);
    }
    CMsgSerializer receiver;
    for (const std::wstring& path : paths) {
        for (const uint64_t mapFrom : {uint64_t{0}, uint64_t{1000000}}) {
            receiver.SetMapFrom(mapFrom);
            EXPECT_FALSE(Load(receiver, Naming(path))) << fs::path(path.substr(0, 300));
            EXPECT_EQ(receiver.Status(), CMsgSerializer::kStatusNoResultFile);
            EXPECT_EQ(receiver.Remaining(), 0u);
        }
    }
    receiver.Reset();
    for (const fs::path& victim : victims) {
        EXPECT_EQ(fs::file_size(victim), sound.size());
    }
    EXPECT_TRUE(fs::exists(link));
    fs::remove_all(m_spill);
    fs::create_directory(m_spill);
}

// Read and mapped alike; an empty file cannot be mapped.
TEST_F(MessageFile, AFileCutAtAnyByteIsRefused) {
    CMsgSerializer sender;
    sender << Sample();
    const Bytes whole = BytesOf(sender);
    const fs::path file = m_spill / L"mst9.tmp";
    for (auto end = whole.begin(); end != whole.end(); ++end) {
        for (const std::size_t mapFrom : {std::size_t{0}, whole.size()}) {
            WriteFileOf(file, Bytes(whole.begin(), end));
            CMsgSerializer receiver;
            receiver.SetMapFrom(mapFrom);
            tagSampleRecord record;
            try {
                ASSERT_FALSE(Load(receiver, Naming(file)) && (receiver >> record).Remaining() == 0) << "read whole";
            } catch (const CIPCMsgBufferException&) {
            }
        }
    }
}

}  // namespace
