#include "IPCMsgBuffer.h"

#include <gmock/gmock.h>

#include <functional>

#include "GuardedBytes.h"
#include "IPCMsgBufferException.h"
#include "SampleRecord.h"

namespace {

Bytes Written(const std::function<void(CSerializer&)>& write) {
    CSerializer out;
    write(out);
    return Bytes(out.Data(), out.Data() + out.GetSize());
}

// Reads bytes that end where readable memory ends.
class CGuardedReader : public CSerializer {
  public:
    explicit CGuardedReader(const Bytes& bytes) : m_bytes(bytes.data(), bytes.size()) {
        AttachBlock(m_bytes.Start(), static_cast<uint32_t>(bytes.size()), false, kDefaultIncrement);
    }

  private:
    wrb::test::CGuardedBytes m_bytes;
};

TEST(IPCMsgBuffer, WritesEveryKindByteForByte) {
    const struct {
        std::function<void(CSerializer&)> write;
        const char* hex;
    } rows[] = {
        {[](CSerializer& out) { out << uint32_t{0x12345678}; }, "04 00 00 00 78 56 34 12"},
        {[](CSerializer& out) { out << int32_t{-1}; }, "04 00 00 00 FF FF FF FF"},
        {[](CSerializer& out) { out << uint16_t{0xABCD}; }, "02 00 00 00 CD AB"},
        {[](CSerializer& out) { out << true; }, "01 00 00 00 01 00 00 00"},
        {[](CSerializer& out) { out << uint8_t{0xFE}; }, "01 00 00 00 FE 00 00 00"},
        {[](CSerializer& out) { out << std::wstring(L"Ab"); }, "06 00 00 00 41 00 62 00 00 00"},
        {[](CSerializer& out) { out << static_cast<const wchar_t*>(nullptr); }, "02 00 00 00 00 00"},
        {[](CSerializer& out) { out.WriteBytes("\x01\x02", 2); }, "02 00 00 00 01 02"},
        {[](CSerializer& out) { out << std::vector<tagSampleItem>{}; }, "00 00 00 00"},
        {[](CSerializer& out) { out << Sample(); }, kSampleHex.data()},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Written(row.write), FromHex(row.hex)) << row.hex;
    }
}

TEST(IPCMsgBuffer, ReadsTextByItsLength) {
    const struct {
        const char* hex;
        const wchar_t* expected;  // null: refused
        uint32_t left;
    } rows[] = {
        {"00 00 00 00", L"before", 0},                 // length 0 leaves the target alone
        {"02 00 00 00 00 00", L"", 0},                 //
        {"03 00 00 00 00 00 77", L"", 0},              // an odd length loses its last byte
        {"06 00 00 00 41 00 00 00 42 00", L"A\0", 0},  // a NUL inside is a character like any other
        {"04 00 00 00 41 00 42 00 99", L"A", 1},       // the last character is dropped, NUL or not
        {"01 00 00 00 00", nullptr, 5},                // no room for the NUL
        {"FC FF FF FF 41 00 00 00", nullptr, 8},       // the sum with the cursor wraps
        {"00 00 00", nullptr, 3},
    };
    for (const auto& row : rows) {
        CGuardedReader in(FromHex(row.hex));
        std::wstring text = L"before";
        if (row.expected == nullptr) {
            EXPECT_THAT([&] { in >> text; },
                        testing::Throws<CIPCMsgBufferException>(testing::Property(
                            &CIPCMsgBufferException::GetCode, CIPCMsgBufferException::Code::kOutOfRange)))
                << row.hex;
        } else {
            in >> text;
            EXPECT_STREQ(text.c_str(), row.expected) << row.hex;
        }
        EXPECT_EQ(in.Remaining(), row.left) << row.hex;
    }
}

// Whatever comes out has been in the bytes.
TEST(IPCMsgBuffer, SurvivesEveryTruncationAndMutation) {
    const Bytes whole = FromHex(kSampleHex);
    for (const Bytes& bytes : CutsAndMutations(whole)) {
        CGuardedReader in(bytes);
        tagSampleRecord record;
        try {
            in >> record;
            EXPECT_EQ(bytes.size(), whole.size());
        } catch (const CIPCMsgBufferException&) {
        }
        EXPECT_LE(record.text.size() * 2 + record.block.size() + record.items.size() * 4, whole.size());
    }
}

}  // namespace
