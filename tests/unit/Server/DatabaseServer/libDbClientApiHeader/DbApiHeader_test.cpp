#include "DbApiHeader.h"

#include <gtest/gtest.h>

#include <cstring>

#include "FakePipeService.h"
#include "PipeClient.h"
#include "UniqueName.h"

namespace wrb::test {
namespace {

constexpr char kRequest[] = "what follows";

// The frame that SendDbApiHeader writes, and the request behind it.
Received SendFrame() {
    const std::wstring name = UniqueName();
    FakePipeService service(name);
    CPipeClient client;
    EXPECT_TRUE(client.Initial(name.c_str()));
    bool requestSent = false;
    const std::span<const uint8_t> request(reinterpret_cast<const uint8_t*>(kRequest), sizeof kRequest);
    EXPECT_EQ(SendDbApiHeader(client, L"dbExample", request, requestSent), 1);
    EXPECT_TRUE(requestSent);
    client.Close();
    return service.WaitFor(1).at(0);
}

std::span<const uint8_t> Bytes(const std::string& text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

TEST(DbApiHeader, IsWrittenInOnePieceAndTellsTheServerWhoAsks) {
    const auto received = SendFrame();
    ASSERT_EQ(received.bytes.substr(0, 4), std::string("\x03\x07\x1A\x0E"));
    uint32_t length;
    std::memcpy(&length, received.bytes.data() + 4, sizeof length);
    EXPECT_EQ(received.pieces, (std::vector<std::size_t>{8 + length + sizeof kRequest}));
    EXPECT_EQ(received.bytes.substr(8, 16), std::string("\x04\0\0\0\x01\0\0\0\x10\0\0\0\x20\xAC\0\0", 16));
    EXPECT_EQ(received.bytes.substr(36, 14), std::string("\x0A\0\0\0N\0U\0L\0L\0\0\0", 14));

    std::span<const uint8_t> request = Bytes(received.bytes);
    CDbApiHeaderContent content;
    ASSERT_EQ(ReadDbApiHeader(request, content), DbApiHeaderStatus::Ok);
    EXPECT_EQ(content.version, 1u);
    EXPECT_EQ(content.processId, GetCurrentProcessId());
    EXPECT_EQ(content.threadId, GetCurrentThreadId());
    EXPECT_EQ(content.caller, L"dbExample");
    EXPECT_TRUE(content.modulePath.ends_with(L"libDbClientApiHeader_test.exe"));
    EXPECT_STREQ(reinterpret_cast<const char*>(request.data()), kRequest);
}

TEST(DbApiHeader, RefusesWhatIsNoFrame) {
    const std::string frame = SendFrame().bytes;
    const std::tuple<std::size_t, uint32_t, DbApiHeaderStatus> cases[] = {
        {0, 0x0E1A0704, DbApiHeaderStatus::BadMagic},
        {4, 0xFFFFFFFF, DbApiHeaderStatus::BadLength},
        {4, kDbApiHeaderLimit + 1, DbApiHeaderStatus::BadLength},
        {4, kDbApiHeaderLimit, DbApiHeaderStatus::TooShort},  // more than there is
        {4, 0, DbApiHeaderStatus::BadContent},                // an empty message
        {4, 100, DbApiHeaderStatus::BadContent},              // one that ends in a value
        {8 + 8, 0, DbApiHeaderStatus::BadContent},            // a control block of no bytes
        {8 + 16, 2, DbApiHeaderStatus::BadContent},           // the body in a file
        {8 + 28, 0xFFFFFFFF, DbApiHeaderStatus::BadContent},  // a name of all ones
    };
    for (const auto& [offset, word, status] : cases) {
        std::string changed = frame;
        std::memcpy(changed.data() + offset, &word, sizeof word);
        std::span<const uint8_t> request = Bytes(changed);
        CDbApiHeaderContent content;
        EXPECT_EQ(ReadDbApiHeader(request, content), status) << offset << " " << word;
    }
}

}  // namespace
}  // namespace wrb::test
