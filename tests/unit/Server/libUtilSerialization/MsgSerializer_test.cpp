#include "MsgSerializer.h"

#include <gtest/gtest.h>

#include "Block.h"
#include "IPCMsgBufferException.h"
#include "SampleRecord.h"

namespace {

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
    wrb::CBlock block = wrb::AllocateBlock(static_cast<uint32_t>(bytes.size()));
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
        tagSampleRecord record;
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
    const struct {
        uint8_t length;
        uint32_t status;
    } rows[] = {{16, 0x11111111}, {0, 0}, {12, 0x11111111}, {8, 0}, {200, 0}};
    CMsgSerializer message;
    for (const auto& row : rows) {
        Bytes block(row.length, 0x11);
        if (row.length > 4) {
            block[4] = 0x01;
        }
        Bytes bytes = SampleMessage();
        bytes[kControlOffset - 4] = row.length;
        const auto control = bytes.begin() + kControlOffset;
        bytes.insert(bytes.erase(control, control + 16), block.begin(), block.end());
        ASSERT_TRUE(Load(message, bytes)) << int{row.length};
        EXPECT_EQ(message.Status(), row.status) << int{row.length};
        EXPECT_EQ(message.Name(), L"NULL");
    }
}

TEST(MsgSerializer, SurvivesEveryTruncationAndMutation) {
    const Bytes whole = SampleMessage();
    CMsgSerializer message;
    for (const Bytes& bytes : CutsAndMutations(whole)) {
        for (const auto receive : {Load, AttachCopy}) {
            tagSampleRecord record;
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
        }
    }
    ASSERT_TRUE(Load(message, whole)) << "usable after all of that";
}

}  // namespace
