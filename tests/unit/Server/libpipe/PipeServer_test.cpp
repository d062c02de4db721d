#include "PipeServer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

#include "FakePipeService.h"
#include "OnThreads.h"
#include "ResourceUse.h"
#include "UniqueName.h"

using namespace std::chrono_literals;
using wrb::test::OpenPipeForWriting;
using wrb::test::PatternBytes;
using wrb::test::UniqueName;
using wrb::test::WritePiece;

namespace {

struct PipeServer : testing::Test {
    // Connects, writes pieces of that many bytes, and closes, on a thread of its own.
    std::jthread PeerSends(const std::string& data, std::size_t piece) const {
        return std::jthread([=, this] {
            const auto pipe = OpenPipeForWriting(m_name);
            for (std::size_t at = 0; at < data.size(); at += piece) {
                ASSERT_TRUE(WritePiece(pipe, std::string_view(data).substr(at, piece)));
            }
        });
    }

    const std::wstring m_name = UniqueName();
};

TEST_F(PipeServer, FetchesTheWholeMessageNarrowAndWide) {
    for (const std::size_t size : {0u, 1u, 3u, 1023u, 1024u, 1025u, 511'999u, 512'000u, 512'001u, 2'000'000u}) {
        const std::string data = PatternBytes(size);
        CPipeServer server;
        ASSERT_TRUE(server.Initial(m_name.c_str(), nullptr));
        std::string narrow;
        DWORD pid = 0;
        {
            const std::jthread peer = PeerSends(data, 1024);
            EXPECT_TRUE(server.FetchCmd(narrow, &pid));
        }
        EXPECT_EQ(pid, GetCurrentProcessId());
        EXPECT_TRUE(narrow == data) << narrow.size();

        const std::jthread peer = PeerSends(data, 1024);
        std::wstring wide = L"left over";
        EXPECT_TRUE(server.FetchCmd(wide));
        ASSERT_EQ(wide.size(), size / 2);  // an odd last byte is dropped
        EXPECT_EQ(std::memcmp(wide.data(), data.data(), wide.size() * 2), 0);
    }
}

// Peers need not keep to pieces of 1024 bytes: a piece may be cut by the end of the receive buffer.
TEST_F(PipeServer, GathersPiecesOfAnySize) {
    for (const std::size_t piece : {1000u, 7u * 1024u + 1u, 511'999u, 512'001u, 700'000u}) {
        const std::string data = PatternBytes(1'500'000);
        CPipeServer server;
        ASSERT_TRUE(server.Initial(m_name.c_str(), nullptr));
        const std::jthread peer = PeerSends(data, piece);
        std::string fetched;
        EXPECT_TRUE(server.FetchCmd(fetched));
        EXPECT_TRUE(fetched == data) << piece << " gave " << fetched.size();
    }
}

// What a peer may do to hold up a fetch. Each must end with the time-out, not later.
TEST_F(PipeServer, TheTimeOutEndsAFetchWhateverThePeerDoes) {
    enum { Absent, ConnectsAndIsSilent, WritesOnceAndIsSilent };
    wrb::test::OnThreads(3, [](unsigned peer) {
        const std::wstring name = UniqueName();
        CPipeServer server;
        ASSERT_TRUE(server.Initial(name.c_str(), 1u));
        const auto pipe = peer == Absent ? wrb::CFileHandle() : OpenPipeForWriting(name);
        EXPECT_TRUE(peer != WritesOnceAndIsSilent || WritePiece(pipe, "half"));
        const auto start = std::chrono::steady_clock::now();
        std::string fetched;
        EXPECT_FALSE(server.FetchCmd(fetched));
        const auto elapsed = std::chrono::steady_clock::now() - start;
        EXPECT_TRUE(elapsed >= 900ms && elapsed < 4s) << elapsed / 1ms;
    });
}

// A cancelled read must leave nothing behind that the system still writes to, and the server fit for the next fetch.
TEST_F(PipeServer, FetchesAfterACancelledFetch) {
    const wrb::CKernelHandle event(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    CPipeServer server;
    ASSERT_TRUE(server.Initial(m_name.c_str(), event.Get()));
    const auto peer = OpenPipeForWriting(m_name);
    const std::jthread signaller([&] {
        Sleep(50);
        SetEvent(event.Get());
    });
    std::string fetched;
    EXPECT_FALSE(server.FetchCmd(fetched));
    EXPECT_TRUE(server.DisconnectAndReconnect(0));
    EXPECT_FALSE(WritePiece(peer, "dropped"));
    const std::jthread next = PeerSends("next", 4);
    EXPECT_TRUE(server.FetchCmd(fetched));
    EXPECT_EQ(fetched, "next");
}

// It takes longer than the time-out, which must not end it: there is no second of silence.
TEST_F(PipeServer, RefusesAMessageWithoutEnd) {
    CPipeServer server;
    ASSERT_TRUE(server.Initial(m_name.c_str(), 1u));
    const std::string piece(1u << 20, 'x');
    std::thread client([&] {
        const auto pipe = OpenPipeForWriting(m_name);
        for (int i = 0; i < 1024 && WritePiece(pipe, piece); ++i) {
        }
    });
    std::string fetched;
    EXPECT_FALSE(server.FetchCmd(fetched));
    EXPECT_GT(fetched.size(), CPipeServer::kLargestMessageBytes - 512'000);
    EXPECT_LE(fetched.size(), CPipeServer::kLargestMessageBytes);
    EXPECT_TRUE(server.DisconnectAndReconnect(0));  // lets the client go
    client.join();
}

TEST_F(PipeServer, TwoThousandRequestsLeaveNothingBehind) {
    const std::wstring service = UniqueName(L"service");
    std::wstring reply;  // the service answers before the next request is made
    const wrb::test::CFakePipeService upper(service, [&](const wrb::test::tagReceived& request) {
        EXPECT_TRUE(WritePiece(OpenPipeForWriting(reply), request.bytes));
    });
    wrb::test::tagResourceUse before{};
    for (int i = 0; i < 2'000; ++i) {
        if (i == 10) {  // what is made once has been made
            before = wrb::test::ResourceUse();
        }
        reply = UniqueName();
        CPipeServer server;
        std::string answer;
        const bool withEvent = i % 2 == 0;
        ASSERT_EQ(withEvent ? PipeSendAndRecvW("ping", 4, reply.c_str(), service.c_str(), server, nullptr) : 1, 1);
        if (!withEvent) {
            ASSERT_TRUE(server.Initial(reply.c_str(), 30u));
            EXPECT_TRUE(WritePiece(OpenPipeForWriting(service), "ping"));
        }
        ASSERT_TRUE(server.FetchCmd(answer));
        ASSERT_EQ(answer, "ping");
    }
    const auto after = wrb::test::ResourceUse();
    EXPECT_GT(before.handles, 0u);
    EXPECT_EQ(after.handles, before.handles);
    EXPECT_LT(after.committedBytes, before.committedBytes + (2u << 20));
}

}  // namespace
