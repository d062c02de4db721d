#include "IPCMsgBuffer.h"

#include <gmock/gmock.h>
#include <windows.h>

#include <functional>

#include "IPCMsgBufferException.h"
#include "SampleRecord.h"

namespace {

Bytes Written(const std::function<void(CSerializer&)>& write) {
    CSerializer out;
    write(out);
    return Bytes(out.Data(), out.Data() + out.GetSize());
}

auto CodeIs(uint32_t code) {
    return testing::Throws<CIPCMsgBufferException>(testing::Property(&CIPCMsgBufferException::GetCode, code));
}

// Reads bytes that end where readable memory ends, so that one byte too far is a crash.
class CGuardedReader : public CSerializer {
  public:
    explicit CGuardedReader(const Bytes& bytes) {
        m_pages = static_cast<uint8_t*>(VirtualAlloc(nullptr, 2 * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        DWORD old;
        VirtualProtect(m_pages + kPage, kPage, PAGE_NOACCESS, &old);
        uint8_t* start = m_pages + kPage - bytes.size();
        std::copy(bytes.begin(), bytes.end(), start);
        AttachBlock(start, static_cast<uint32_t>(bytes.size()), false, kDefaultIncrement);
    }
    ~CGuardedReader() override { VirtualFree(m_pages, 0, MEM_RELEASE); }

  private:
    static constexpr std::size_t kPage = 4096;
    uint8_t* m_pages;
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
            EXPECT_THAT([&] { in >> text; }, CodeIs(CIPCMsgBufferException::Code::kOutOfRange)) << row.hex;
        } else {
            in >> text;
            EXPECT_STREQ(text.c_str(), row.expected) << row.hex;
        }
        EXPECT_EQ(in.Remaining(), row.left) << row.hex;
    }
}

// Every cut, and every byte replaced by the values that upset lengths most. Whatever comes out has been in the bytes.
TEST(IPCMsgBuffer, SurvivesEveryTruncationAndMutation) {
    const Bytes whole = FromHex(kSampleHex);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        CGuardedReader in(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        tagSampleRecord record;
        EXPECT_THROW(in >> record, CIPCMsgBufferException) << length;
    }
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const uint8_t value : kMutations) {
            Bytes mutated = whole;
            mutated[at] = value;
            CGuardedReader in(mutated);
            tagSampleRecord record;
            try {
                in >> record;
            } catch (const CIPCMsgBufferException&) {
            }
            EXPECT_LE(record.text.size() * 2 + record.block.size() + record.items.size() * 4, whole.size()) << at;
        }
    }
}

}  // namespace
