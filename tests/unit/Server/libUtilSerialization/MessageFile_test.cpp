// Messages that travel in a file: both sides in one process, with a home folder of the test's own.
#include <gmock/gmock.h>
#include <windows.h>

#include <filesystem>
#include <fstream>

#include "CapturedLog.h"
#include "Handle.h"
#include "IPCMsgBufferException.h"
#include "MsgSerializer.h"
#include "SampleRecord.h"

namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::Field;
using testing::HasSubstr;

constexpr std::size_t kFlagsOffset = 16;

class MessageFile : public testing::Test {
  protected:
    // The registry below HKEY_LOCAL_MACHINE is replaced by an empty key, for this process only.
    void SetUp() override {
        const std::wstring unique = L"wrb_spill_" + std::to_wstring(GetCurrentProcessId());
        m_key = L"Software\\" + unique;
        m_home = fs::temp_directory_path() / unique;
        m_spill = m_home / L"temp";
        fs::create_directories(m_spill);
        wrb::CRegistryKey machine;
        ASSERT_EQ(RegCreateKeyW(HKEY_CURRENT_USER, m_key.c_str(), machine.Receive()), ERROR_SUCCESS);
        ASSERT_EQ(RegOverridePredefKey(HKEY_LOCAL_MACHINE, machine.Get()), ERROR_SUCCESS);
        const std::wstring path = m_home;
        const auto bytes = static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t));
        ASSERT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\CallowaySystems\\Warrenby\\service\\Information",
                                  L"Local_Path", REG_SZ, path.c_str(), bytes),
                  ERROR_SUCCESS);
        TakeCapturedLog();
    }
    void TearDown() override {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegDeleteTreeW(HKEY_CURRENT_USER, m_key.c_str());
        EXPECT_TRUE(fs::is_empty(m_spill)) << "a message left its file behind";
        fs::remove_all(m_home);
    }

    fs::path OnlyFile() const {
        EXPECT_EQ(std::distance(fs::directory_iterator(m_spill), {}), 1);
        return fs::directory_iterator(m_spill)->path();
    }

    std::wstring m_key;
    fs::path m_home;
    fs::path m_spill;
};

Bytes BytesOf(const CMsgSerializer& message) {
    return Bytes(message.Data(), message.Data() + message.GetSize());
}

bool Load(CMsgSerializer& message, const Bytes& bytes) {
    return message.Load(bytes.data(), static_cast<uint32_t>(bytes.size()));
}

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
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
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
    constexpr uint32_t kTexts = 2000;
    for (uint32_t i = 0; i < kTexts; ++i) {
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
    for (uint32_t i = 0; i < kTexts; ++i) {
        uint32_t number = 0;
        std::wstring read;
        receiver >> number >> read;
        ASSERT_EQ(number, i);
        ASSERT_EQ(read, text);
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
        EXPECT_EQ(record, Sample());
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

    const std::wstring paths[] = {
        L"",
        L"mst1.tmp",
        L"\\\\localhost\\c$\\mst1.tmp",
        victims[0],
        victims[1],
        victims[2],
        m_spill / L"mst2.tmp",
        link,
        m_spill / L"mst4.tmp",
        m_spill / L"..\\mst1.tmp",
        m_spill / L"mst5.tmp:stream",
        m_spill / L"mst?.tmp",
        victims[3].wstring() + std::wstring(1, L'\0') + L"x",
        L"\\\\?\\" + victims[0].wstring(),
    };
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
    const Bytes sent = Naming(file);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        for (const bool mapped : {false, true}) {
            WriteFileOf(file, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
            CMsgSerializer receiver;
            receiver.SetMapFrom(mapped ? 0 : whole.size());
            tagSampleRecord record;
            if (size > 0 || !mapped) {
                EXPECT_THROW(Load(receiver, sent) && (receiver >> record).GetSize(), CIPCMsgBufferException) << size;
            } else {
                EXPECT_FALSE(Load(receiver, sent));
            }
        }
    }
}

}  // namespace
