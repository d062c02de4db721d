// Both ends of a pipe, each against a fake of the other.
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

#include "ChildProcess.h"
#include "FakePipeService.h"
#include "OnThreads.h"
#include "PipeClient.h"
#include "PipeServer.h"
#include "ResourceUse.h"
#include "UniqueName.h"

namespace wrb::test {
namespace {

using namespace std::chrono_literals;

struct Pipe : testing::Test {
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
using PipeClient = Pipe;
using PipeServer = Pipe;

TEST_F(PipeClient, SendsAllBytesInPiecesOfAtMost1024) {
    for (const std::size_t size : {0u, 1u, 1023u, 1024u, 1025u, 511'999u, 512'000u, 512'001u, 2'000'000u}) {
        const std::string data = PatternBytes(size);
        const FakePipeService service(m_name);
        CPipeClient client;
        ASSERT_TRUE(client.Initial(m_name.c_str())) << GetLastError();
        uint64_t bytes = size;
        EXPECT_TRUE(client.Send(data.data(), bytes)) << GetLastError();
        EXPECT_EQ(bytes, size);
        client.Close();
        const auto message = service.WaitFor(1).at(0);
        EXPECT_TRUE(message.bytes == data) << size;
        std::vector<std::size_t> pieces((size + 1023) / 1024, 1024);
        if (size % 1024 != 0) {
            pieces.back() = size % 1024;
        }
        EXPECT_EQ(message.pieces, pieces);
    }
}

// The names come from the network. One that the system would resolve to a file must not reach that file.
TEST_F(PipeClient, RefusesNamesThatLeaveThePipeNamespace) {
    const std::pair<std::wstring, DWORD> cases[] = {
        {L"..", ERROR_INVALID_NAME},
        {L"..\\C:\\windows\\win.ini", ERROR_INVALID_NAME},
        {L"a/../../C:/windows/win.ini", ERROR_INVALID_NAME},
        {L"a\\.. \\b", ERROR_INVALID_NAME},
        {L"..\\UNC\\host\\pipe\\x", ERROR_INVALID_NAME},
        {std::wstring(251, L'x'), ERROR_FILENAME_EXCED_RANGE},
        {L"Global\\..absent..", ERROR_FILE_NOT_FOUND},  // dots within a part are a name like any other
    };
    for (const auto& [name, error] : cases) {
        CPipeClient client;
        EXPECT_FALSE(client.Initial(name.c_str()));
        EXPECT_EQ(GetLastError(), error) << testing::PrintToString(name);
    }
}

// A pipe that is never read, of a server that has set any time-out for its clients. Nothing but the client's own
// deadline ends these calls.
TEST_F(PipeClient, NoServerHoldsItBeyondItsDeadline) {
    const FileHandle pipe(CreateNamedPipeW((L"\\\\.\\pipe\\" + m_name).c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE,
                                           1, 1024, 1024, NMPWAIT_WAIT_FOREVER, nullptr));
    CPipeClient first;
    ASSERT_TRUE(first.Initial(m_name.c_str(), 20));
    const std::string data(5000, 'x');
    uint64_t bytes = data.size();
    EXPECT_FALSE(first.Send(data.data(), bytes));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SEM_TIMEOUT});
    EXPECT_LT(bytes, data.size());
    EXPECT_EQ(bytes % 1024, 0u) << "the cancelled piece counts as written";
    for (const std::wstring& name : {m_name, L"/" + m_name}) {
        CPipeClient second;
        EXPECT_FALSE(second.Initial(name.c_str(), 20));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_SEM_TIMEOUT});
    }
    std::string received(1024, '\0');
    DWORD count = 0;
    for (uint64_t read = 0; read < bytes; read += count) {
        ASSERT_TRUE(ReadFile(pipe.Get(), received.data(), 1024, &count, nullptr));
        EXPECT_TRUE(received == data.substr(0, 1024));
    }
    bytes = 1000;
    EXPECT_TRUE(first.Send(data.data(), bytes)) << "after the reader has read";
}

TEST_F(PipeClient, ASendToAReaderThatHasGoneFailsAndTellsWhatWasWritten) {
    auto service = std::make_unique<FakePipeService>(m_name);
    CPipeClient client;
    ASSERT_TRUE(client.Initial(m_name.c_str()));
    service.reset();
    const std::string data(5000, 'x');
    uint64_t bytes = data.size();
    EXPECT_FALSE(client.Send(data.data(), bytes));
    EXPECT_NE(GetLastError(), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(bytes, 0u);
}

// Peers need not keep to pieces of 1024 bytes: a piece may be cut by the end of the receive buffer.
TEST_F(PipeServer, FetchesTheWholeMessageNarrowAndWide) {
    for (const std::size_t piece : {1024u, 1000u, 7u * 1024u + 1u, 511'999u, 512'001u, 700'000u}) {
        for (const std::size_t size : {0u, 1u, 3u, 1023u, 1024u, 1025u, 511'999u, 512'000u, 512'001u, 2'000'000u}) {
            if (piece != 1024 && size < 2'000'000) {
                continue;  // other piece sizes matter for long messages only
            }
            const std::string data = PatternBytes(size);
            CPipeServer server;
            ASSERT_TRUE(server.Initial(m_name.c_str(), nullptr));
            std::string narrow;
            DWORD pid = 0;
            {
                const std::jthread peer = PeerSends(data, piece);
                EXPECT_TRUE(server.FetchCmd(narrow, &pid));
            }
            EXPECT_EQ(pid, GetCurrentProcessId());
            EXPECT_TRUE(narrow == data) << piece << " gave " << narrow.size();

            const std::jthread peer = PeerSends(data, piece);
            std::wstring wide = L"left over";
            EXPECT_TRUE(server.FetchCmd(wide));
            ASSERT_EQ(wide.size(), size / 2);  // an odd last byte is dropped
            EXPECT_EQ(std::memcmp(wide.data(), data.data(), wide.size() * 2), 0);
        }
    }
}

// What a peer may do to hold up a fetch. Each must end with the time-out, not later.
TEST_F(PipeServer, TheTimeOutEndsAFetchWhateverThePeerDoes) {
    enum { Absent, ConnectsAndIsSilent, WritesOnceAndIsSilent, WritesNowAndThen };
    OnThreads(4, [](unsigned peer) {
        const std::wstring name = UniqueName();
        CPipeServer server;
        ASSERT_TRUE(server.Initial(name.c_str(), 1u));
        const auto pipe = peer == Absent ? FileHandle() : OpenPipeForWriting(name);
        EXPECT_TRUE(peer != WritesOnceAndIsSilent || WritePiece(pipe, "half"));
        const std::jthread drip([&](const std::stop_token& stop) {
            while (peer == WritesNowAndThen && !stop.stop_requested() && WritePiece(pipe, "x")) {
                Sleep(100);
            }
        });
        const auto start = std::chrono::steady_clock::now();
        std::string fetched;
        EXPECT_FALSE(server.FetchCmd(fetched));
        const auto elapsed = std::chrono::steady_clock::now() - start;
        EXPECT_TRUE(elapsed >= 900ms && elapsed < 4s) << elapsed / 1ms;
    });
}

// The time-out is longer than this test may take.
TEST_F(PipeServer, AServiceThatIsKilledEndsTheWaitForItsAnswer) {
    for (const auto& [isForestalled, connects] : {std::pair(false, false), {true, false}, {false, true}}) {
        const std::wstring service = UniqueName(L"service");
        const ChildProcess child(L"pipe_child.exe", connects ? std::vector{service, m_name} : std::vector{service});
        ASSERT_TRUE(child.WaitForOutput("serving"));
        CPipeServer server;
        ASSERT_TRUE(server.Initial(m_name.c_str(), 600u));
        {
            CPipeClient client;
            ASSERT_TRUE(client.Initial(service.c_str()));
            server.EndWith(client);
        }
        const FileHandle stranger = isForestalled ? OpenPipeForWriting(m_name) : FileHandle();
        EXPECT_TRUE(!isForestalled || WritePiece(stranger, "forged"));
        const std::jthread killer([&] {
            EXPECT_TRUE(child.WaitForOutput("asked"));
            TerminateProcess(child.Handle(), 1);
        });
        std::string fetched;
        EXPECT_FALSE(server.FetchCmd(fetched));
        EXPECT_EQ(fetched, "");
    }
}

// After a cancelled read the system must not write to the buffer any more, and the next fetch must work.
TEST_F(PipeServer, FetchesAfterACancelledFetch) {
    const KernelHandle event(CreateEventW(nullptr, FALSE, FALSE, nullptr));
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

// Event and timer go from one server to the next: those of a fetch that timed out, and of one that was answered.
TEST_F(PipeServer, AServerThatWaitsIsNotDisturbedByTheOnesBeforeIt) {
    std::string fetched;
    for (const bool answered : {false, true}) {
        {
            CPipeServer former;
            ASSERT_TRUE(former.Initial(m_name.c_str(), 1u));
            const std::jthread peer = answered ? PeerSends("first", 5) : std::jthread();
            EXPECT_EQ(former.FetchCmd(fetched), answered);
        }
        for (const uint32_t timeout : {0u, 30u}) {
            CPipeServer server;
            ASSERT_TRUE(server.Initial(m_name.c_str(), timeout));
            const std::jthread peer([&] {
                Sleep(timeout == 0 ? 1'200 : 50);  // beyond the former server's time-out; beyond the start of the wait
                EXPECT_TRUE(WritePiece(OpenPipeForWriting(m_name), "second"));
            });
            EXPECT_TRUE(server.FetchCmd(fetched));
            EXPECT_EQ(fetched, "second");
        }
    }
}

// More threads than objects are kept for.
TEST_F(PipeServer, ServersOnTwelveThreadsDoNotShareWhatIsHandedOn) {
    OnThreads(12, [](unsigned thread) {
        const std::wstring name = UniqueName();
        const std::string message = "thread " + std::to_string(thread);
        for (int i = 0; i < 100; ++i) {
            CPipeServer server;
            ASSERT_TRUE(server.Initial(name.c_str(), 30u));
            ASSERT_TRUE(WritePiece(OpenPipeForWriting(name), message));
            std::string fetched;
            ASSERT_TRUE(server.FetchCmd(fetched));
            ASSERT_EQ(fetched, message);
        }
    });
}

// It takes longer than the time-out, which must not end it: there is no second of silence.
TEST_F(PipeServer, RefusesAMessageWithoutEnd) {
    CPipeServer server;
    ASSERT_TRUE(server.Initial(m_name.c_str(), 600u));
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

// What one server has read counts until it fetches again or ends; a single message is never refused.
TEST_F(PipeServer, MessagesShareTheirMemory) {
    std::string fetched;
    const auto fetch = [&](CPipeServer& server, std::size_t bytes, const std::wstring& name) {
        EXPECT_TRUE(server.Initial(name.c_str(), 30u));
        server.LimitOthers(999);
        const std::jthread peer([&] { WritePiece(OpenPipeForWriting(name), std::string(bytes, 'x')); });
        return server.FetchCmd(fetched) && fetched.size() == bytes;
    };
    CPipeServer large;
    EXPECT_TRUE(fetch(large, 1'000, m_name));
    for (const bool isAlone : {false, true}) {
        CPipeServer server;
        const std::wstring name = UniqueName();
        EXPECT_EQ(fetch(server, 1, name), isAlone);
        const std::jthread peer([&] { WritePiece(OpenPipeForWriting(m_name), "short"); });
        EXPECT_TRUE(large.FetchCmd(fetched));
    }
}

TEST_F(PipeServer, TwoThousandRequestsLeaveNothingBehind) {
    const std::wstring service = UniqueName(L"service");
    const FakePipeService upper(
        service, [&](const Received& request) { EXPECT_TRUE(WritePiece(OpenPipeForWriting(m_name), request.bytes)); });
    ResourceUse before{};
    for (int i = 0; i < 2'000; ++i) {
        if (i == 10) {  // what is made once has been made
            before = CurrentResourceUse();
        }
        CPipeServer server;
        if (i % 2 == 0) {
            ASSERT_EQ(PipeSendAndRecvW("ping", 4, m_name.c_str(), service.c_str(), server, nullptr), 1);
        } else {
            ASSERT_TRUE(server.Initial(m_name.c_str(), 30u) && WritePiece(OpenPipeForWriting(service), "ping"));
        }
        std::string answer;
        ASSERT_TRUE(server.FetchCmd(answer));
        ASSERT_EQ(answer, "ping");
    }
    const auto after = CurrentResourceUse();
    EXPECT_GT(before.handles, 0u);
    EXPECT_EQ(after.handles, before.handles);
    EXPECT_LT(after.committedBytes, before.committedBytes + (2u << 20));
}

}  // namespace
}  // namespace wrb::test
