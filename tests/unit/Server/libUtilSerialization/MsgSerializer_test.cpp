// Values, whole messages byte for byte, and messages that travel in a file: both sides in one process, with a home
// folder of the test's own.
#include <gmock/gmock.h>

#include "Block.h"
#include "CapturedLog.h"
#include "GuardedBytes.h"
#include "IPCMsgBufferException.h"
#include "MsgSerializer.h"
#include "ServerHome.h"

namespace {

using Bytes = std::vector<uint8_t>;

struct SampleItem : ISerializable {
    uint16_t key;
    std::wstring text;

    explicit SampleItem(uint16_t itemKey = 0, std::wstring itemText = {}) : key(itemKey), text(std::move(itemText)) {}
    void Serialize(ISerializer& serializer) const override { serializer.GetSerializer() << key << text; }
    void Deserialize(ISerializer& serializer) override { serializer.GetSerializer() >> key >> text; }
};

struct SampleRecordOf : ISerializable {
    uint32_t number = 0;
    int32_t signedNumber = 0;
    bool flag = false;
    std::wstring text;
    Bytes block;
    std::vector<SampleItem> items;

    void Serialize(ISerializer& serializer) const override {
        serializer.GetSerializer() << number << signedNumber << flag << text << block << items;
    }
    void Deserialize(ISerializer& serializer) override {
        serializer.GetSerializer() >> number >> signedNumber >> flag >> text >> block >> items;
    }
};

SampleRecordOf Sample() {
    SampleRecordOf record;
    record.number = 0x89ABCDEF;
    record.signedNumber = -2;
    record.flag = true;
    record.text = L"A\u00e9";
    record.block = {1, 2, 3};  // an odd length: what follows is not aligned
    record.items = {SampleItem(7, L"x"), SampleItem(8)};
    return record;
}

// "04 00 FF" as bytes.
Bytes FromHex(std::string_view hex) {
    std::istringstream words{std::string(hex)};
    Bytes bytes;
    for (std::string word; words >> word;) {
        bytes.push_back(static_cast<uint8_t>(std::stoul(word, nullptr, 16)));
    }
    return bytes;
}

Bytes BytesOf(const CSerializer& message) {
    return Bytes(message.Data(), message.Data() + message.GetSize());
}

bool Load(CMsgSerializer& message, const Bytes& bytes) {
    return message.Load(bytes.data(), static_cast<uint32_t>(bytes.size()));
}

constexpr std::string_view kSampleHex =
    "04 00 00 00  EF CD AB 89 "
    "04 00 00 00  FE FF FF FF "
    "01 00 00 00  01 00 00 00 "
    "06 00 00 00  41 00 E9 00 00 00 "
    "03 00 00 00  01 02 03 "
    "02 00 00 00 "
    "02 00 00 00  07 00 "
    "04 00 00 00  78 00 00 00 "
    "02 00 00 00  08 00 "
    "02 00 00 00  00 00 ";

// Reads bytes that end where readable memory ends.
class GuardedReader : public CSerializer {
  public:
    explicit GuardedReader(const Bytes& bytes) : m_bytes(bytes.data(), bytes.size()) {
        AttachBlock(wrb::Block(m_bytes.Start(), {.owned = false}), static_cast<uint32_t>(bytes.size()),
                    kDefaultIncrement);
    }

  private:
    wrb::test::GuardedBytes m_bytes;
};

TEST(IPCMsgBuffer, WritesEveryKindByteForByte) {
    CSerializer sample;
    sample << Sample();
    EXPECT_EQ(BytesOf(sample), FromHex(kSampleHex));
    CSerializer out;
    out << uint8_t{0xFE} << static_cast<const wchar_t*>(nullptr) << std::vector<SampleItem>{};
    out.WriteBytes("\x01\x02", 2);
    EXPECT_EQ(BytesOf(out), FromHex("01 00 00 00 FE 00 00 00  02 00 00 00 00 00  00 00 00 00  02 00 00 00 01 02"));
}

TEST(IPCMsgBuffer, ReadsTextByItsLength) {
    // The bytes, the text (null: refused), and how many bytes are left.
    const std::tuple<const char*, const wchar_t*, uint32_t> rows[] = {
        {"00 00 00 00", L"before", 0},                 // length 0 leaves the target alone
        {"02 00 00 00 00 00", L"", 0},                 //
        {"03 00 00 00 00 00 77", L"", 0},              // an odd length loses its last byte
        {"06 00 00 00 41 00 00 00 42 00", L"A\0", 0},  // a NUL inside is a character like any other
        {"04 00 00 00 41 00 42 00 99", L"A", 1},       // the last character is dropped, NUL or not
        {"01 00 00 00 00", nullptr, 5},                // no room for the NUL
        {"FC FF FF FF 41 00 00 00", nullptr, 8},       // the sum with the cursor wraps
        {"00 00 00", nullptr, 3},
    };
    for (const auto& [hex, expected, left] : rows) {
        GuardedReader in(FromHex(hex));
        std::wstring text = L"before";
        if (expected == nullptr) {
            EXPECT_THAT([&] { in >> text; },
                        testing::Throws<CIPCMsgBufferException>(testing::Property(
                            &CIPCMsgBufferException::GetCode, CIPCMsgBufferException::Code::kOutOfRange)))
                << hex;
        } else {
            in >> text;
            EXPECT_STREQ(text.c_str(), expected) << hex;
        }
        EXPECT_EQ(in.Remaining(), left) << hex;
    }
}

TEST(IPCMsgBuffer, ABlockThatIsLongerThanTheMessageIsRefusedWithALine) {
    GuardedReader in(FromHex("05 00 00 00 01"));
    Bytes block;
    TakeCapturedLog();
    EXPECT_THROW(in >> block, CIPCMsgBufferException);
    EXPECT_EQ(TakeCapturedLog().back().text,
              L"CIPCMsgBuffer::operator >> - CIPCMsgBuffer::operator >>() ==> size error "
              L"(m_dwCurPos[4]+iTotalBytes[5]) > m_dwBytesUsed[5]");
}

// Every cut of the bytes, and every byte replaced by the values that upset lengths, counts and flags most.
std::vector<Bytes> CutsAndMutations(const Bytes& whole) {
    std::vector<Bytes> all;
    for (auto at = whole.begin(); at != whole.end(); ++at) {
        all.emplace_back(whole.begin(), at);
        for (const char value : "\x01\x02\x03\x11\x7F\x80\xFF") {
            all.push_back(whole);
            all.back()[static_cast<std::size_t>(at - whole.begin())] = static_cast<uint8_t>(value);
        }
    }
    return all;
}

constexpr std::string_view kHeaderHex =
    "04 00 00 00  01 00 00 00 "
    "10 00 00 00  20 AC 00 00  01 00 00 00  00 00 00 00  00 00 00 00 "
    "0A 00 00 00  4E 00 55 00 4C 00 4C 00 00 00 "
    "30 00 00 00  30 00 31 00 30 00 35 00 4E 00 55 00 4C 00 4C 00 31 00 32 00 33 00 34 00 35 00 36 00 5F 00 "
    "             34 00 33 00 32 00 31 00 5F 00 39 00 38 00 37 00 00 00 ";
constexpr auto kControlOffset = 12;

Bytes SampleMessage() {
    return FromHex(std::string(kHeaderHex) + std::string(kSampleHex));
}

bool AttachCopy(CMsgSerializer& message, const Bytes& bytes) {
    wrb::Block block = wrb::AllocateBlock(static_cast<uint32_t>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), block.get());
    return message.Attach(block.release(), static_cast<uint32_t>(bytes.size()));
}

TEST(MsgSerializer, IdNamesMessageTimeAndSender) {
    EXPECT_EQ(wrb::MakeMessageId(L"NULL", 123456, 4321, 987), L"0105NULL123456_4321_987");
    EXPECT_EQ(wrb::MakeMessageId(L"", 0x80000000, 1, 2), L"0105-2147483648_1_2");
}

// One message, taken apart and put together again: the bytes in the test are the format.
TEST(MsgSerializer, ReadsAndWritesAWholeMessageByteForByte) {
    for (const auto receive : {Load, AttachCopy}) {
        CMsgSerializer message(L"other");
        ASSERT_TRUE(receive(message, SampleMessage()));
        EXPECT_EQ(message.Name(), L"NULL");
        EXPECT_EQ(message.Id(), L"0105NULL123456_4321_987");
        EXPECT_EQ(message.Status(), 0u);
        SampleRecordOf record;
        message >> record;
        EXPECT_EQ(message.Remaining(), 0u);

        message.Reset();
        message << record;
        EXPECT_TRUE(message.Finalize());
        EXPECT_EQ(BytesOf(message), SampleMessage());
    }
    const Bytes fresh = BytesOf(CMsgSerializer());
    EXPECT_EQ(Bytes(fresh.begin(), fresh.begin() + 42), FromHex(kHeaderHex.substr(0, kHeaderHex.find("30 00 00 00"))));
}

// A block of at most 16 bytes is taken over as far as it goes; a longer one is passed over. Nothing stays of the block
// before it.
TEST(MsgSerializer, ControlBlockMayHaveAnyLength) {
    const std::pair<uint8_t, uint32_t> rows[] = {{16, 0x11111111}, {0, 0}, {12, 0x11111111}, {8, 0}, {200, 0}};
    CMsgSerializer message;
    for (const auto& [length, status] : rows) {
        Bytes block(length, 0x11);
        if (length > 4) {
            block[4] = 0x01;
        }
        Bytes bytes = SampleMessage();
        bytes[kControlOffset - 4] = length;
        const auto control = bytes.begin() + kControlOffset;
        bytes.insert(bytes.erase(control, control + 16), block.begin(), block.end());
        ASSERT_TRUE(Load(message, bytes)) << int{length};
        EXPECT_EQ(message.Status(), status) << int{length};
        EXPECT_EQ(message.Name(), L"NULL");
    }
}

// What comes out has been in the bytes.
TEST(MsgSerializer, SurvivesEveryTruncationAndMutation) {
    const Bytes whole = SampleMessage();
    CMsgSerializer message;
    for (const Bytes& bytes : CutsAndMutations(whole)) {
        for (const auto receive : {Load, AttachCopy}) {
            SampleRecordOf record;
            try {
                if (receive(message, bytes)) {
                    message >> record;
                    EXPECT_EQ(bytes.size(), whole.size());
                } else {
                    EXPECT_EQ(message.Status(), CMsgSerializer::kStatusNoResultFile);
                    EXPECT_EQ(message.Remaining(), 0u);
                }
            } catch (const CIPCMsgBufferException&) {
            }
            EXPECT_LE(record.text.size() * 2 + record.block.size() + record.items.size() * 4, whole.size());
        }
    }
    ASSERT_TRUE(Load(message, whole)) << "usable after all of that";
}

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

    const wrb::test::ServerHome m_home;
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
    return Contains(Field(&CapturedLine::text, HasSubstr(text)));
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

TEST_F(MessageFile, SizeDecidesBetweenReadingAndMapping) {
    for (const uint64_t size : {52428799, 52428800}) {
        const Bytes sent = SentInFile();
        fs::resize_file(OnlyFile(), size);
        CMsgSerializer receiver;
        ASSERT_TRUE(Load(receiver, sent)) << size;
        SampleRecordOf record;
        receiver >> record;
        EXPECT_EQ(record.items.size(), 2u);
        const std::wstring name = OnlyFile();
        EXPECT_THAT(TakeCapturedLog(),
                    Logged(size == 52428800 ? L"CMsgSerializer::ReadFile - Use memory mapped file to read: " + name
                                            : L"CMsgSerializer::ReadFile - [File mode] File name = " + name +
                                                  L", file size = 52428799"));
        receiver.Reset();
        EXPECT_TRUE(fs::is_empty(m_spill));
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

    const std::wstring paths[] = {L"",
                                  L"mst1.tmp",
                                  L"\\\\localhost\\c$\\mst1.tmp",
                                  victims[0],
                                  victims[1],
                                  victims[2],
                                  L"\\\\?\\" + victims[0].wstring(),
                                  victims[3].wstring() + std::wstring(1, L'\0') + L"x",
                                  m_spill / L"mst2.tmp",
                                  link,
                                  m_spill / L"mst4.tmp",
                                  m_spill / L"..\\mst1.tmp",
                                  m_spill / L"mst5.tmp:stream",
                                  m_spill / L"mst?.tmp"};
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
            SampleRecordOf record;
            try {
                ASSERT_FALSE(Load(receiver, Naming(file)) && (receiver >> record).Remaining() == 0) << "read whole";
            } catch (const CIPCMsgBufferException&) {
            }
        }
    }
}

}  // namespace
