#include "PipeServer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

#include "FakePipeService.h"
#include "PipeClient.h"
#include "ReplyPipe.h"
#include "ResourceUse.h"
#include "UniqueName.h"

using namespace std::chrono_literals;
using wrb::test::OpenPipeForWriting;
using wrb::test::PatternBytes;
using wrb::test::UniqueName;
using wrb::test::WritePiece;

namespace {

class PipeServer : public testing::Test {
  protected:
    // Runs a client on a thread of its own; the thread ends with the test.
    void Client(std::function<void()> action) { m_clients.emplace_back(std::move(action)); }

    void ClientSends(const std::string& data) {
        Client([this, data] {
            CPipeClient client;
            uint64_t bytes = data.size();
            EXPECT_TRUE(client.Initial(m_name.c_str()) && client.Send(data.data(), bytes)) << GetLastError();
        });
    }

    void TearDown() override {
        for (std::thread& client : m_clients) {
            client.join();
        }
    }

    static wrb::CKernelHandle NewEvent(bool manualReset = true) {
        return wrb::CKernelHandle(CreateEventW(nullptr, manualReset, FALSE, nullptr));
    }

    const std::wstring m_name = UniqueName();
    std::vector<std::thread> m_clients;
};

class PipeServerSizes : public PipeServer, public testing::WithParamInterface<std::size_t> {};

TEST_P(PipeServerSizes, FetchesTheWholeMessageNarrowAndWide) {
    const std::string data = PatternBytes(GetParam());
    CPipeServer server;
    ASSERT_TRUE(server.Initial(m_name.c_str(), nullptr));
    ClientSends(data);
    std::string narrow;
    EXPECT_TRUE(server.FetchCmd(narrow));
    EXPECT_TRUE(narrow == data) << narrow.size();

    ClientSends(data);
    std::wstring wide = L"left over";
    EXPECT_TRUE(server.FetchCmd(wide));
    ASSERT_EQ(wide.size(), data.size() / 2);  // an odd last byte is dropped
    EXPECT_EQ(std::memcmp(wide.data(), data.data(), wide.size() * 2), 0);
}

INSTANTIATE_TEST_SUITE_P(Edges, PipeServerSizes,
                         testing::Values(0, 1, 3, 1023, 1024, 1025, 511999, 512000, 512001, 2'000'000));

// Peers need not keep to pieces of 1024 bytes: a piece may be cut by the end of the receive buffer.
TEST_F(PipeServer, GathersPiecesOfAnySize) {
    for (const std::size_t piece : {1000u, 7u * 1024u + 1u, 511'999u, 512'001u, 700'000u}) {
        const std::string data = PatternBytes(1'500'000);
        CPipeServer server;
        ASSERT_TRUE(server.Initial(m_name.c_str(), nullptr));
        std::thread peer([&] {
            const auto pipe = OpenPipeForWriting(m_name);
            for (std::size_t at = 0; at < data.size(); at += piece) {
                ASSERT_TRUE(WritePiece(pipe, std::string_view(data).substr(at, piece)));
            }
        });
        std::string fetched;
        EXPECT_TRUE(server.FetchCmd(fetched));
        peer.join();
        EXPECT_TRUE(fetched == data) << piece << " gave " << fetched.size();
    }
}

TEST_F(PipeServer, AClientThatClosesAtOnceGivesAnEmptyMessage) {
    CPipeServer server;
    ASSERT_TRUE(server.Initial(m_name.c_str(), nullptr));
    EXPECT_TRUE(OpenPipeForWriting(m_name));  // and has gone before the fetch
    for (int i = 0; i < 3; ++i) {
        std::string fetched = "left over";
        EXPECT_TRUE(server.FetchCmd(fetched));
        EXPECT_EQ(fetched, "");
        Client([this] { EXPECT_TRUE(OpenPipeForWriting(m_name)); });  // waits for the next fetch
    }
    std::string fetched;
    EXPECT_TRUE(server.FetchCmd(fetched));
}

TEST_F(PipeServer, AConnectThatIsAskedForTooEarlyStaysPending) {
    wrb::CReplyPipe instance;
    ASSERT_TRUE(instance.CreateEventObject());
    instance.Attach(wrb::CFileHandle(CreateNamedPipeW((L"\\\\.\\pipe\\" + m_name).c_str(),
                                                      PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED, PIPE_TYPE_MESSAGE, 1,
                                                      0, 1024, 0, nullptr)));
    ASSERT_TRUE(instance.ConnectToNewClient());
    EXPECT_FALSE(instance.FinishConnect());
    const auto client = OpenPipeForWriting(m_name);
    EXPECT_EQ(WaitForSingleObject(instance.Event(), 10'000), WAIT_OBJECT_0);
    EXPECT_TRUE(instance.FinishConnect());
    EXPECT_TRUE(instance.IsReading());
}

TEST_F(PipeServer, AMessageWrittenBeforeTheFetchIsKept) {
    CPipeServer server;
    ASSERT_TRUE(server.Initial(m_name.c_str(), nullptr));
    EXPECT_TRUE(WritePiece(OpenPipeForWriting(m_name), "early"));
    std::string fetched;
    EXPECT_TRUE(server.FetchCmd(fetched));
    EXPECT_EQ(fetched, "early");
}

// What a peer may do to hold up a fetch. Each must end with the time-out, not later.
TEST_F(PipeServer, TheTimeOutEndsAFetchWhateverThePeerDoes) {
    enum class Peer { Absent, ConnectsAndIsSilent, WritesOnceAndIsSilent };
    for (const Peer peer : {Peer::Absent, Peer::ConnectsAndIsSilent, Peer::WritesOnceAndIsSilent}) {
        Client([peer, name = UniqueName()] {
            CPipeServer server;
            ASSERT_TRUE(server.Initial(name.c_str(), 1u));
            const auto pipe = peer == Peer::Absent ? wrb::CFileHandle() : OpenPipeForWriting(name);
            if (peer == Peer::WritesOnceAndIsSilent) {
                EXPECT_TRUE(WritePiece(pipe, "half"));
            }
            const auto start = std::chrono::steady_clock::now();
            std::string fetched;
            EXPECT_FALSE(server.FetchCmd(fetched));
            const auto elapsed = std::chrono::steady_clock::now() - start;
            EXPECT_GE(elapsed, 900ms);
            EXPECT_LT(elapsed, 4s);
        });
    }
}

TEST_F(PipeServer, TheTimeOutCountsFromTheLastPiece) {
    CPipeServer server;
    ASSERT_TRUE(server.Initial(m_name.c_str(), 1u));
    Client([this] {
        const auto pipe = OpenPipeForWriting(m_name);
        for (int i = 0; i < 4; ++i) {
            EXPECT_TRUE(WritePiece(pipe, "piece "));
            Sleep(400);
        }
    });
    std::string fetched;
    EXPECT_TRUE(server.FetchCmd(fetched));
    EXPECT_EQ(fetched, "piece piece piece piece ");
}

TEST_F(PipeServer, TheUserEventEndsAFetch) {
    for (const bool manualReset : {true, false}) {
        const auto event = NewEvent(manualReset);
        CPipeServer server;
        ASSERT_TRUE(server.Initial(m_name.c_str(), event.Get()));
        const auto silent = OpenPipeForWriting(m_name);
        std::thread signaller([&] {
            Sleep(100);
            SetEvent(event.Get());
        });
        std::wstring fetched;
        EXPECT_FALSE(server.FetchCmd(fetched));
        signaller.join();
    }
}

TEST_F(PipeServer, AnEventSignalledBeforeTheFetchWinsOverTheData) {
    const auto event = NewEvent();
    CPipeServer server;
    ASSERT_TRUE(server.Initial(m_name.c_str(), event.Get()));
    EXPECT_TRUE(WritePiece(OpenPipeForWriting(m_name), "too late"));
    SetEvent(event.Get());
    std::string fetched;
    EXPECT_FALSE(server.FetchCmd(fetched));
}

// A cancelled read must leave nothing behind that the system still writes to, and the server fit for the next fetch.
TEST_F(PipeServer, FetchesAfterACancelledFetch) {
    const auto event = NewEvent(false);
    CPipeServer server;
    ASSERT_TRUE(server.Initial(m_name.c_str(), event.Get()));
    const auto peer = OpenPipeForWriting(m_name);
    std::thread signaller([&] {
        Sleep(50);
        SetEvent(event.Get());
    });
    std::string fetched;
    EXPECT_FALSE(server.FetchCmd(fetched));
    signaller.join();
    EXPECT_TRUE(server.DisconnectAndReconnect(0));
    EXPECT_FALSE(WritePiece(peer, "dropped"));
    ClientSends("next");
    EXPECT_TRUE(server.FetchCmd(fetched));
    EXPECT_EQ(fetched, "next");
}

TEST_F(PipeServer, TellsTheProcessIdOfTheWriter) {
    CPipeServer server;
    ASSERT_TRUE(server.Initial(m_name.c_str(), nullptr));
    ClientSends("who am I");
    std::string fetched;
    DWORD pid = 1;
    EXPECT_TRUE(server.FetchCmd(fetched, &pid));
    EXPECT_EQ(pid, GetCurrentProcessId());

    const auto peer = OpenPipeForWriting(m_name);
    EXPECT_TRUE(server.DisconnectAndReconnect(0, &pid));
    EXPECT_EQ(pid, GetCurrentProcessId());
    EXPECT_FALSE(server.DisconnectAndReconnect(1, &pid));
}

TEST_F(PipeServer, MakesAtMost255Instances) {
    const auto event = NewEvent();
    CPipeServer server;
    ASSERT_TRUE(server.Initial(300, m_name.c_str(), nullptr, event.Get()));
    const std::wstring path = L"\\\\.\\pipe\\" + m_name;
    std::vector<wrb::CFileHandle> clients;
    for (;;) {
        wrb::CFileHandle client(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        if (!client) {
            break;
        }
        clients.push_back(std::move(client));
    }
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PIPE_BUSY});
    EXPECT_EQ(clients.size(), 255u);
}

TEST_F(PipeServer, AServerWithoutInstancesOnlyWaitsForItsObject) {
    const auto event = NewEvent();
    CPipeServer server;
    ASSERT_TRUE(server.Initial(0, m_name.c_str(), nullptr, event.Get()));
    SetEvent(event.Get());
    std::string fetched;
    EXPECT_FALSE(server.FetchCmd(fetched));
}

TEST_F(PipeServer, ANameIsFreeAgainOnceItsServerIsGone) {
    for (int i = 0; i < 3; ++i) {
        CPipeServer server;
        ASSERT_TRUE(server.Initial(m_name.c_str(), 0u)) << i;
        std::thread peer([&] { EXPECT_TRUE(WritePiece(OpenPipeForWriting(m_name), "x")); });
        std::string fetched;
        EXPECT_TRUE(server.FetchCmd(fetched));
        peer.join();
    }
}

TEST_F(PipeServer, ANameThatIsTakenIsTriedForHalfASecond) {
    CPipeServer holder;
    ASSERT_TRUE(holder.Initial(m_name.c_str(), nullptr));
    const auto start = std::chrono::steady_clock::now();
    CPipeServer late;
    EXPECT_FALSE(late.Initial(m_name.c_str(), nullptr));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 450ms);

    auto leaver = std::make_unique<CPipeServer>();
    const std::wstring name = UniqueName();
    ASSERT_TRUE(leaver->Initial(name.c_str(), nullptr));
    std::thread leaving([&] {
        Sleep(150);
        leaver.reset();
    });
    EXPECT_TRUE(late.Initial(name.c_str(), nullptr));
    leaving.join();
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

TEST_F(PipeServer, SendAndRecvBringsTheAnswerOfAService) {
    const std::wstring service = UniqueName(L"service");
    const wrb::test::CFakePipeService upper(service, [this](const wrb::test::tagReceived& request) {
        EXPECT_TRUE(WritePiece(OpenPipeForWriting(m_name), "answer to " + request.bytes));
    });
    CPipeServer server;
    ASSERT_EQ(PipeSendAndRecvW("request", 7, m_name.c_str(), service.c_str(), server, nullptr), 1);
    std::string answer;
    EXPECT_TRUE(server.FetchCmd(answer));
    EXPECT_EQ(answer, "answer to request");
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
