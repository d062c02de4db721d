#include "IPCMsgBuffer.h"

#include <gmock/gmock.h>
#include <windows.h>

#include <functional>
#include <limits>

#include "CapturedLog.h"
#include "IPCMsgBufferException.h"
#include "SampleRecord.h"

namespace {

using Code = CIPCMsgBufferException::Code;

Bytes Written(const std::function<void(CSerializer&)>& write) {
    CSerializer out;
    write(out);
    return Bytes(out.Data(), out.Data() + out.GetSize());
}

template <typename Read>
uint32_t CodeThrownBy(Read read) {
    try {
        read();
    } catch (const CIPCMsgBufferException& exception) {
        return exception.GetCode();
    }
    ADD_FAILURE() << "nothing thrown";
    return ~0u;
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
        {[](CSerializer& out) { out << DWORD{5}; }, "04 00 00 00 05 00 00 00"},
        {[](CSerializer& out) { out << uint16_t{0xABCD}; }, "02 00 00 00 CD AB"},
        {[](CSerializer& out) { out << true; }, "01 00 00 00 01 00 00 00"},
        {[](CSerializer& out) { out << false; }, "01 00 00 00 00 00 00 00"},
        {[](CSerializer& out) { out << uint8_t{0xFE}; }, "01 00 00 00 FE 00 00 00"},
        {[](CSerializer& out) { out << int8_t{-2}; }, "01 00 00 00 FE 00 00 00"},
        {[](CSerializer& out) { out << std::wstring(L"Ab"); }, "06 00 00 00 41 00 62 00 00 00"},
        {[](CSerializer& out) { out << L"Ab"; }, "06 00 00 00 41 00 62 00 00 00"},
        {[](CSerializer& out) { out << std::wstring(); }, "02 00 00 00 00 00"},
        {[](CSerializer& out) { out << static_cast<const wchar_t*>(nullptr); }, "02 00 00 00 00 00"},
        {[](CSerializer& out) { out.WriteBytes("\x01\x02", 2); }, "02 00 00 00 01 02"},
        {[](CSerializer& out) { out << Bytes{}; }, "00 00 00 00"},
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
        {"04 00 00 00 41 00 00", nullptr, 7},          //
        {"FF FF FF FF 41 00 00 00", nullptr, 8},       //
        {"FC FF FF FF 41 00 00 00", nullptr, 8},       // the sum with the cursor wraps
        {"00 00 00", nullptr, 3},
    };
    for (const auto& row : rows) {
        CGuardedReader in(FromHex(row.hex));
        std::wstring text = L"before";
        if (row.expected == nullptr) {
            EXPECT_EQ(CodeThrownBy([&] { in >> text; }), Code::kOutOfRange) << row.hex;
        } else {
            in >> text;
            EXPECT_STREQ(text.c_str(), row.expected) << row.hex;
        }
        EXPECT_EQ(in.Remaining(), row.left) << row.hex;
    }
}

TEST(IPCMsgBuffer, ReadersOfFixedWidthIgnoreTheLengthWord) {
    CGuardedReader in(FromHex("FF FF FF FF 01 02 03 04  00 00 00 00 05 06  09 00 00 00 00 01 00 00"));
    uint32_t number = 0;
    uint16_t small = 0;
    bool flag = false;
    in >> number >> small >> flag;
    EXPECT_EQ(number, 0x04030201u);
    EXPECT_EQ(small, 0x0605);
    EXPECT_TRUE(flag);
    EXPECT_EQ(CodeThrownBy([&] { in >> number; }), Code::kOutOfRange);
}

TEST(IPCMsgBuffer, AnArrayOfMoreElementsThanBytesIsRefusedWhole) {
    CGuardedReader in(FromHex("03 00 00 00  02 00 00 00 07 00  02 00 00 00 00"));
    std::vector<tagSampleItem> items(1);
    EXPECT_EQ(CodeThrownBy([&] { in >> items; }), Code::kOutOfRange);
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(in.Remaining(), 15u);
}

TEST(IPCMsgBuffer, GetDataTellsTheSizeBeforeItReads) {
    CSerializer in;
    in.WriteBytes("\x01\x02\x03", 3);
    uint8_t buffer[5] = {9, 9, 9, 9, 9};
    uint32_t length = 2;
    EXPECT_EQ(in.GetData(buffer, length), 0);
    EXPECT_EQ(length, 3u);
    EXPECT_EQ(in.GetData(nullptr, length), 0);
    length = sizeof buffer;
    EXPECT_EQ(in.GetData(buffer, length), 1);
    EXPECT_EQ(length, 3u);
    EXPECT_THAT(buffer, testing::ElementsAre(1, 2, 3, 0, 0));

    CGuardedReader overrun(FromHex("04 00 00 00 01 02 03"));
    TakeCapturedLog();
    EXPECT_EQ(CodeThrownBy([&] { overrun.GetData(buffer, length); }), Code::kOutOfRange);
    EXPECT_THAT(TakeCapturedLog(), testing::ElementsAre(testing::Field(
                                       &tagCapturedLine::text,
                                       L"CIPCMsgBuffer::operator >> - CIPCMsgBuffer::operator >>() ==> size error "
                                       L"(m_dwCurPos[4]+iTotalBytes[4]) > m_dwBytesUsed[7]")));
}

TEST(IPCMsgBuffer, ErrorsSayWhatAndWhere) {
    EXPECT_STREQ(CIPCMsgBufferException(Code::kNotOwner, L"Server\\a.cpp", 12).what(),
                 "Not owner, (2), [Server\\a.cpp|12]");
    CSerializer empty;
    uint32_t number = 0;
    EXPECT_EQ(CodeThrownBy([&] { empty >> number; }), Code::kInvalidBuffer);
    EXPECT_EQ(CodeThrownBy([&] { empty.DetachBlock(); }), Code::kNotOwner);
    try {
        empty << number;
        empty >> number >> number;
        FAIL();
    } catch (const OS::CException& exception) {
        EXPECT_THAT(exception.what(), testing::StartsWith("Out of range, (0), [Server\\libUtilSerialization\\"));
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

TEST(AccBuffer, GrowsByWholeIncrements) {
    const struct {
        uint32_t increment, first, second, capacity;
    } rows[] = {
        {1024, 1, 0, 1024},     {1024, 1023, 0, 1024},     {1024, 1024, 0, 2048},  // a multiple gains one more
        {1024, 1000, 24, 1024}, {1024, 1000, 25, 2048},    {1024, 1, 1024, 3072},  // counted from the capacity
        {32768, 10, 0, 32768},  {32768, 10, 32768, 98304}, {0, 1, 0, 1024},
    };
    const Bytes bytes(40000, 0x5A);
    for (const auto& row : rows) {
        CAccBuffer buffer(row.increment);
        buffer.Append(bytes.data(), row.first);
        buffer.Append(bytes.data(), row.second);
        EXPECT_EQ(buffer.Capacity(), row.capacity) << row.increment << ' ' << row.first << ' ' << row.second;
        EXPECT_EQ(buffer.Size(), row.first + row.second);
    }
    CAccBuffer reserved;
    reserved.Reserve(5000);
    const uint32_t capacity = reserved.Capacity();
    reserved.Append(bytes.data(), 5000);
    EXPECT_EQ(reserved.Capacity(), capacity);
    reserved.Reserve(std::numeric_limits<uint32_t>::max());
    EXPECT_EQ(reserved.Capacity(), capacity);
}

TEST(AccBuffer, CopiesKeepTheBytesAndTheCursor) {
    CIPCMsgBuffer source;
    source << uint32_t{1} << L"two";
    uint32_t number = 0;
    source >> number;
    CIPCMsgBuffer copy = source;
    source << true;
    std::wstring text;
    copy >> text;
    EXPECT_EQ(text, L"two");
    EXPECT_EQ(copy.Remaining(), 0u);
    copy = CIPCMsgBuffer();
    EXPECT_EQ(copy.Remaining(), 0u);
}

}  // namespace
