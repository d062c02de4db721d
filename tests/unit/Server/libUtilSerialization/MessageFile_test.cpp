// Messages that travel in a file: both sides in one process, with a home folder of the test's own.
#include <aclapi.h>
#include <gmock/gmock.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include "CapturedLog.h"
#include "Handle.h"
#include "IPCMsgBufferException.h"
#include "MsgSerializer.h"
#include "SampleRecord.h"
#include "SpillDirectory.h"

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
        SetLocalPath(m_home);
        TakeCapturedLog();
    }
    void TearDown() override {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegDeleteTreeW(HKEY_CURRENT_USER, m_key.c_str());
        EXPECT_TRUE(fs::is_empty(m_spill)) << "a message left its file behind";
        fs::remove_all(m_home);
    }

    static void SetLocalPath(const std::wstring& path) {
        const auto bytes = static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t));
        ASSERT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\CallowaySystems\\Warrenby\\service\\Information",
                                  L"Local_Path", REG_SZ, path.c_str(), bytes),
                  ERROR_SUCCESS);
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
    uint32_t held = 0;
    buffer >> held;
    EXPECT_EQ(held, 0x5A5A5A5Au) << "what the block held can still be read";
    const CIPCMsgBuffer copy = buffer;
    EXPECT_EQ(copy.Size(), 0u);
    EXPECT_EQ(copy.Remaining(), 0u);
}

TEST_F(MessageFile, ALargeMessageArrivesWhole) {
    CMsgSerializer sender(L"DBV2_X");
    const std::wstring text(1000, L'\u00e9');
    constexpr uint32_t kTexts = 2000;
    for (uint32_t i = 0; i < kTexts; ++i) {
        sender << i << text;
    }
    const uint32_t size = sender.GetSize();
    ASSERT_TRUE(sender.Finalize());
    const fs::path file = OnlyFile();
    EXPECT_EQ(fs::file_size(file), size);
    EXPECT_THAT(file.filename().wstring(), testing::StartsWith(L"mst"));
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
    EXPECT_EQ(receiver.Remaining(), 0u);
    EXPECT_TRUE(fs::exists(file));
    receiver.Reset();
    EXPECT_FALSE(fs::exists(file));
}

// A mapped body is not the message's own block, so it cannot be given away.
TEST_F(MessageFile, SizeDecidesBetweenReadingAndMapping) {
    for (const uint64_t size : {uint64_t{52428799}, uint64_t{52428800}, uint64_t{0}}) {
        const bool mapped = size != 52428799;
        const Bytes sent = SentInFile();
        CMsgSerializer receiver;
        if (size > 0) {
            fs::resize_file(OnlyFile(), size);
        } else {
            receiver.SetMapFrom(fs::file_size(OnlyFile()));
        }
        TakeCapturedLog();
        ASSERT_TRUE(Load(receiver, sent)) << size;
        tagSampleRecord record;
        receiver >> record;
        EXPECT_EQ(record, Sample());
        const std::wstring name = OnlyFile().wstring();
        EXPECT_THAT(
            TakeCapturedLog(),
            Logged(mapped ? L"CMsgSerializer::ReadFile - Use memory mapped file to read: " + name
                          : L"CMsgSerializer::ReadFile - [File mode] File name = " + name + L", file size = 52428799"));
        if (mapped) {
            EXPECT_THROW(receiver.DetachBlock(), CIPCMsgBufferException);
        } else {
            EXPECT_NE(receiver.DetachBlock(), nullptr);
        }
    }
}

TEST_F(MessageFile, TheFileOutlivesTheSenderButNotTheExchange) {
    CMsgSerializer(nullptr, CMsgSerializer::kInFile) << 1u;
    EXPECT_TRUE(fs::is_empty(m_spill)) << "never finalized";

    CMsgSerializer sender(L"n", CMsgSerializer::kInFile);
    sender.Reset();
    EXPECT_TRUE(fs::is_empty(m_spill)) << "reset";
    EXPECT_FALSE(sender.InFileMode());

    const Bytes sent = SentInFile();
    EXPECT_TRUE(fs::exists(OnlyFile())) << "sender gone";
    CMsgSerializer receiver;
    EXPECT_TRUE(Load(receiver, sent));
    EXPECT_TRUE(Load(receiver, BytesOf(CMsgSerializer())));
    EXPECT_TRUE(fs::is_empty(m_spill)) << "receiver has the next message";

    CMsgSerializer unanswered(nullptr, CMsgSerializer::kInFile);
    ASSERT_TRUE(unanswered.Finalize());
    unanswered.Reset();
    EXPECT_EQ(unanswered.Data()[kFlagsOffset], 0x01);
    ASSERT_TRUE(fs::exists(OnlyFile()));
    unanswered.DiscardSentFile();
    EXPECT_TRUE(fs::is_empty(m_spill));
}

// By the time of the answer the receiver has deleted the file, and the system may have given its name to another.
TEST_F(MessageFile, AnAnswerLeavesTheFileOfThatNameAlone) {
    Bytes answer = BytesOf(CMsgSerializer());
    const std::function<void(CMsgSerializer&)> answers[] = {
        [&](CMsgSerializer& message) { EXPECT_TRUE(Load(message, answer)); },
        [&](CMsgSerializer& message) {
            EXPECT_TRUE(message.Attach(answer.data(), static_cast<uint32_t>(answer.size())));
        },
        [](CMsgSerializer& message) { EXPECT_ANY_THROW(Load(message, Bytes(3))); },
    };
    for (const auto& take : answers) {
        CMsgSerializer message(nullptr, CMsgSerializer::kInFile);
        ASSERT_TRUE(message.Finalize());
        const fs::path another = OnlyFile();
        take(message);
        message.DiscardSentFile();
        EXPECT_TRUE(fs::remove(another));
    }
}

TEST_F(MessageFile, ADriveIsASpillDirectoryToo) {
    wchar_t before[MAX_PATH + 1] = {};
    GetEnvironmentVariableW(L"TMP", before, MAX_PATH + 1);
    for (const std::wstring& folder : {std::wstring(L"C:\\"), m_home.wstring(), m_home.wstring() + L"\\"}) {
        SetEnvironmentVariableW(L"TMP", folder.c_str());
        const std::wstring directory = wrb::SpillDirectories().back();
        EXPECT_EQ(directory, folder == L"C:\\" ? folder : m_home.wstring()) << fs::path(folder);
        const std::wstring file = fs::path(folder) / L"mst1.tmp";
        EXPECT_EQ(wrb::AcceptedSpillPath(file), file);
        EXPECT_EQ(wrb::AcceptedSpillPath(fs::path(folder) / L"below" / L"mst1.tmp"), L"");
    }
    SetEnvironmentVariableW(L"TMP", before);
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
        std::wstring(10000, L'a'),
        L"\\\\.\\pipe\\mst1.tmp",
        L"\\\\localhost\\c$\\mst1.tmp",
        victims[0],
        victims[1],
        victims[2],
        m_spill,
        m_spill / L"mst2.tmp",
        link,
        m_spill / L"mst4.tmp",
        m_spill / L"..\\mst1.tmp",
        m_spill / L"mst5.tmp:stream",
        m_spill / L"mst.tmp",
        m_spill / L"mst?.tmp",
        victims[3].wstring() + std::wstring(1, L'\0') + L"x",
        L"\\\\?\\" + victims[0].wstring(),
    };
    CMsgSerializer receiver;
    for (const std::wstring& path : paths) {
        for (const uint64_t mapFrom : {uint64_t{0}, uint64_t{1000000}}) {
            receiver.SetMapFrom(mapFrom);
            TakeCapturedLog();
            EXPECT_FALSE(Load(receiver, Naming(path))) << fs::path(path.substr(0, 300));
            EXPECT_EQ(receiver.Status(), CMsgSerializer::kStatusNoResultFile);
            EXPECT_EQ(receiver.Remaining(), 0u);
            EXPECT_THAT(TakeCapturedLog(), Logged(L"CMsgSerializer::ReadFile - [File mode] F"));
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

TEST_F(MessageFile, AFileCannotNameTheNextFile) {
    const Bytes sent = SentInFile();
    const fs::path inner = OnlyFile();
    const fs::path outer = m_spill / L"mstABCD.tmp";
    WriteFileOf(outer, sent);
    CMsgSerializer receiver;
    EXPECT_FALSE(Load(receiver, Naming(outer)));
    EXPECT_EQ(receiver.Status(), CMsgSerializer::kStatusNoResultFile);
    receiver.Reset();
    EXPECT_FALSE(fs::exists(outer));
    EXPECT_TRUE(fs::remove(inner));
}

// Read and mapped alike; an empty file cannot be mapped, and the log says so in its own words.
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
                EXPECT_THAT(TakeCapturedLog(), Logged(L"CreateIPCResultMapFile - MapViewOfFile failed! err = "));
            }
        }
    }
}

TEST_F(MessageFile, WithoutAHomeFolderThatExistsTheNextDirectoryServes) {
    SetLocalPath((m_home / L"missing").wstring() + L"\\");
    const Bytes sent = SentInFile();
    EXPECT_TRUE(fs::is_empty(m_spill));
    CMsgSerializer receiver;
    EXPECT_TRUE(Load(receiver, sent));
}

// Rights of an account by the access list of a file.
ACCESS_MASK RightsOf(const fs::path& file, WELL_KNOWN_SID_TYPE account) {
    PACL acl = nullptr;
    wrb::CLocalMemory descriptor;
    EXPECT_EQ(GetNamedSecurityInfoW(file.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &acl,
                                    nullptr, descriptor.Receive()),
              static_cast<DWORD>(ERROR_SUCCESS));
    BYTE sid[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof sid;
    EXPECT_TRUE(CreateWellKnownSid(account, nullptr, sid, &size));
    ACCESS_MASK rights = 0;
    for (DWORD i = 0; i < acl->AceCount; ++i) {
        void* entry;
        EXPECT_TRUE(GetAce(acl, i, &entry));
        auto* allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
        rights |= EqualSid(&allowed->SidStart, sid) ? allowed->Mask : 0;
    }
    return rights;
}

// Wine keeps what Unix permissions can say, so the two accounts of the web server cannot be looked for.
TEST_F(MessageFile, EveryReceiverMayReadAndDeleteTheFile) {
    constexpr ACCESS_MASK kAll = FILE_GENERIC_READ | FILE_GENERIC_WRITE | FILE_GENERIC_EXECUTE | DELETE;
    const Bytes sent = SentInFile();
    EXPECT_EQ(RightsOf(OnlyFile(), WinWorldSid) & kAll, kAll);
    EXPECT_EQ(RightsOf(OnlyFile(), WinLocalSystemSid) & kAll, kAll);
    CMsgSerializer receiver;
    EXPECT_TRUE(Load(receiver, sent));
}

TEST_F(MessageFile, ExchangesLeaveNoHandlesBehind) {
    const auto handles = [] {
        DWORD count = 0;
        EXPECT_TRUE(GetProcessHandleCount(GetCurrentProcess(), &count));
        return count;
    };
    DWORD before = 0;
    for (int i = 0; i < 60; ++i) {
        const Bytes sent = SentInFile();
        CMsgSerializer receiver;
        receiver.SetMapFrom(i % 2 == 0 ? 0 : 1000000);
        ASSERT_TRUE(Load(receiver, sent));
        before = i == 9 ? handles() : before;
    }
    EXPECT_EQ(handles(), before);
}

}  // namespace
