#include "PipeListener.h"

#include <gmock/gmock.h>

#include "FakePipeService.h"
#include "OnThreads.h"
#include "UniqueName.h"

namespace wrb::test {
namespace {

using testing::UnorderedElementsAre;

// Collects what a listener hands over and drops; to be looked at when it has stopped.
struct ListenerTest : testing::Test {
    ListenerTest() {
        options.name = UniqueName();
        options.instances = 2;
        options.readTimeoutMilliseconds = options.drainMilliseconds = 20'000;
        options.onDrop = [this](PipeDrop reason, std::size_t, uint32_t pid) {
            EXPECT_EQ(pid, GetCurrentProcessId());
            const std::scoped_lock guard(lock);
            drops.push_back(reason);
        };
    }
    void Keep(std::string message) {
        const std::scoped_lock guard(lock);
        messages.push_back(std::move(message));
    }
    PipeListener::InOrder Keeping() {
        return {0, [this](std::string message, const PipePeer&) {
                    Keep(std::move(message));
                    return Job();
                }};
    }
    bool Send(std::string_view bytes) const { return WritePiece(OpenPipeForWriting(options.name), bytes); }

    PipeListenerOptions options;
    std::mutex lock;
    std::vector<std::string> messages;
    std::vector<PipeDrop> drops;
};

TEST_F(ListenerTest, AMessageIsAllThatOneClientWrites) {
    options.maxMessageBytes = 300'000;
    PipeListener listener(options, [this](std::string message) { Keep(std::move(message)); });
    ASSERT_TRUE(listener.Start());
    const std::string longest = PatternBytes(options.maxMessageBytes);
    for (const std::string& message : {longest.substr(0, 1), longest.substr(1), longest}) {
        const FileHandle peer = OpenPipeForWriting(options.name);
        const std::size_t half = message.size() / 2;
        ASSERT_TRUE(WritePiece(peer, message.substr(0, half)) && WritePiece(peer, message.substr(half)));
    }
    listener.Stop();
    EXPECT_THAT(messages, UnorderedElementsAre(longest.substr(0, 1), longest.substr(1), longest));
    EXPECT_EQ(listener.Counters().accepted, 3u);
}

TEST_F(ListenerTest, HostilePeersCostOneInstanceForAWhileAndNothingElse) {
    options.maxMessageBytes = 1000;
    options.readTimeoutMilliseconds = 300;
    PipeListener listener(options, [this](std::string message) {
        Keep(message);
        if (message == "bad") {
            throw std::runtime_error("bad");
        }
    });
    ASSERT_TRUE(listener.Start());
    std::vector<FileHandle> peers;
    for (const std::size_t bytes : {0u, 4u, 1001u, 60'000u}) {  // silent, stops in the middle, too long
        peers.push_back(OpenPipeForWriting(options.name));
        ASSERT_TRUE(peers.back());
        if (bytes > 0) {
            WritePiece(peers.back(), std::string(bytes, 'x'));
        }
        EXPECT_TRUE(Send("good")) << "meanwhile";
    }
    EXPECT_TRUE(Send("bad") && OpenPipeForWriting(options.name) && Send("good"));
    WaitUntil([&] { return listener.Counters().dropped >= 5; });
    listener.Stop();
    EXPECT_THAT(drops, UnorderedElementsAre(PipeDrop::TimedOut, PipeDrop::TimedOut, PipeDrop::Oversized,
                                            PipeDrop::Oversized, PipeDrop::HandlerThrew));
    EXPECT_THAT(messages, UnorderedElementsAre("good", "good", "good", "good", "bad", "good"));
    EXPECT_EQ(listener.Counters().accepted, 5u);
    EXPECT_EQ(listener.Counters().dropped, 5u);
    EXPECT_EQ(listener.Counters().empty, 1u);
}

// A client that has closed one connection and opens the next: the service must never see the second message first.
TEST_F(ListenerTest, OneClientsMessagesComeInItsOrderHoweverFewInstancesThereAre) {
    constexpr unsigned kClients = 8;
    constexpr unsigned kMessages = 50;
    for (const unsigned instances : {3u, 16u}) {
        options.instances = instances;
        messages.clear();
        PipeListener listener(options, Keeping());
        ASSERT_TRUE(listener.Start());
        OnThreads(kClients, [&](unsigned who) {
            for (unsigned i = 0; i < kMessages; ++i) {
                std::string text = static_cast<char>('A' + who) + std::to_string(i) + '\0';
                text.resize(text.size() + (i % 2 == 0 ? 40'000u : 0u));  // long ones take many reads
                const FileHandle peer = OpenPipeForWriting(options.name);
                for (std::size_t at = 0; at < text.size(); at += 1024) {  // as the product's client does
                    ASSERT_TRUE(WritePiece(peer, std::string_view(text).substr(at, 1024)));
                }
            }
        });
        listener.Stop();
        EXPECT_EQ(messages.size(), std::size_t{kClients * kMessages});
        std::map<char, int> next;
        for (const std::string& message : messages) {
            EXPECT_EQ(std::atoi(message.c_str() + 1), next[message[0]]++) << message[0];
        }
    }
}

TEST_F(ListenerTest, AJobRunsOnAWorkerWhileTheNextMessageIsAccepted) {
    const KernelHandle second(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const auto accept = [&](const std::string& message, const PipePeer& peer) {
        EXPECT_EQ(peer.Pid(), GetCurrentProcessId());
        if (message == "second") {
            SetEvent(second.Get());
            return Job();
        }
        return Job([&] { EXPECT_EQ(WaitForSingleObject(second.Get(), 20'000), WAIT_OBJECT_0); });
    };
    PipeListener listener(options, PipeListener::InOrder{1, accept});
    ASSERT_TRUE(listener.Start());
    EXPECT_TRUE(Send("first") && Send("second"));
    listener.Stop();
    EXPECT_EQ(listener.Counters().accepted, 2u);
}

// Whoever could write and close has been heard, in the middle of a stop too.
TEST_F(ListenerTest, NoMessageThatCouldBeSentIsLostByAStop) {
    options.instances = 64;
    for (int round = 0; round < 20; ++round) {
        std::atomic<unsigned> sent = 0;
        PipeListener listener(options, Keeping());
        ASSERT_TRUE(listener.Start());
        OnThreads(5, [&](unsigned who) {
            if (who == 0) {
                WaitUntil([&] { return sent >= 100; });
                listener.Stop();
                return;
            }
            while (const FileHandle peer = OpenPipeForWriting(options.name)) {
                sent += WritePiece(peer, "heard") ? 1 : 0;
            }
        });
        ASSERT_EQ(listener.Counters().accepted, sent) << "round " << round;
    }
}

TEST_F(ListenerTest, StopFinishesWhatItHasAcceptedAndDropsTheRest) {
    options.instances = 4;
    options.drainMilliseconds = 300;
    const KernelHandle running(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    PipeListener listener(options, [&](std::string message) {
        SetEvent(running.Get());
        Sleep(100);
        Keep(std::move(message));
    });
    ASSERT_TRUE(listener.Start());
    ASSERT_TRUE(Send("whole"));
    ASSERT_EQ(WaitForSingleObject(running.Get(), 20'000), WAIT_OBJECT_0);
    FileHandle slow = OpenPipeForWriting(options.name);
    const FileHandle silent = OpenPipeForWriting(options.name);
    ASSERT_TRUE(silent && WritePiece(slow, "slow but "));
    std::thread stopper([&] { listener.Stop(); });
    Sleep(50);
    EXPECT_TRUE(WritePiece(slow, "complete"));
    slow.Reset();
    stopper.join();
    EXPECT_THAT(messages, UnorderedElementsAre("whole", "slow but complete"));
    EXPECT_THAT(drops, UnorderedElementsAre(PipeDrop::Stopping));
    EXPECT_FALSE(OpenPipeForWriting(options.name)) << "the name is free";
}

}  // namespace
}  // namespace wrb::test
