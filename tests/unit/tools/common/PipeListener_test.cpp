#include "PipeListener.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <stdexcept>

namespace wrb {
namespace {

using testing::UnorderedElementsAreArray;

std::wstring UniqueName() {
    static std::atomic<unsigned> next{0};
    return L"wrb_listener_test_" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++next);
}

// A peer that does with its end what a test wants.
class CPeer {
  public:
    explicit CPeer(const std::wstring& name) {
        const std::wstring path = L"\\\\.\\pipe\\" + name;
        do {
            m_pipe.Reset(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        } while (!m_pipe && GetLastError() == ERROR_PIPE_BUSY && WaitNamedPipeW(path.c_str(), 20'000));
    }
    explicit operator bool() const { return static_cast<bool>(m_pipe); }
    bool Write(const std::string& bytes) {
        DWORD written = 0;
        return WriteFile(m_pipe.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
               written == bytes.size();
    }
    void Leave() { m_pipe.Reset(); }

  private:
    CFileHandle m_pipe;
};

// Collects what a listener hands over and lets a test wait for it.
class CInbox {
  public:
    void Put(std::string message) {
        const std::lock_guard lock(m_mutex);
        m_messages.push_back(std::move(message));
        m_changed.notify_all();
    }
    std::vector<std::string> Take(std::size_t count) {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::seconds(20), [&] { return m_messages.size() >= count; });
        return m_messages;
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_messages;
};

struct CListenerTest : testing::Test {
    PipeListenerOptions Options(unsigned instances = 2) {
        PipeListenerOptions options;
        options.name = UniqueName();
        options.instances = instances;
        options.maxMessageBytes = 1000;
        options.readTimeoutMilliseconds = 300;
        options.drainMilliseconds = 300;
        options.onDrop = [this](PipeDrop reason, std::size_t, uint32_t pid) {
            EXPECT_EQ(pid, GetCurrentProcessId());
            drops.Put(std::to_string(static_cast<int>(reason)));
        };
        return options;
    }
    CPipeListener::Handler ToInbox() {
        return [this](std::string message) { inbox.Put(std::move(message)); };
    }
    static std::string Reason(PipeDrop reason) { return std::to_string(static_cast<int>(reason)); }

    CInbox inbox;
    CInbox drops;
};

TEST_F(CListenerTest, AMessageIsAllThatOneClientWrites) {
    const auto options = Options();
    CPipeListener listener(options, ToInbox());
    ASSERT_TRUE(listener.Start());
    std::vector<std::string> sent;
    for (const std::size_t size : {1u, 999u, 1000u}) {
        sent.emplace_back(size, 'x');
        CPeer peer(options.name);
        ASSERT_TRUE(peer.Write(sent.back().substr(0, size / 2)) && peer.Write(sent.back().substr(size / 2)));
    }
    EXPECT_THAT(inbox.Take(3), UnorderedElementsAreArray(sent));
    listener.Stop();
    EXPECT_EQ(listener.Counters().accepted, 3u);
    EXPECT_EQ(listener.Counters().dropped, 0u);
}

TEST_F(CListenerTest, MessagesBeyondOneReadArriveWhole) {
    auto options = Options();
    options.maxMessageBytes = 1u << 20;
    options.readTimeoutMilliseconds = 20'000;
    CPipeListener listener(options, ToInbox());
    ASSERT_TRUE(listener.Start());
    std::string big(300'000, '\0');
    std::generate(big.begin(), big.end(), [n = 0]() mutable { return static_cast<char>(n++ % 251); });
    CPeer peer(options.name);
    ASSERT_TRUE(peer.Write(big));
    peer.Leave();
    EXPECT_EQ(inbox.Take(1).at(0), big);
}

TEST_F(CListenerTest, HostilePeersCostOneInstanceForAWhileAndNothingElse) {
    const struct {
        const char* what;
        void (*behave)(CPeer&);
        PipeDrop reason;
    } kPeers[] = {
        {"silent", [](CPeer&) {}, PipeDrop::TimedOut},
        {"stops in the middle", [](CPeer& peer) { peer.Write("half"); }, PipeDrop::TimedOut},
        {"one byte too long", [](CPeer& peer) { peer.Write(std::string(1001, 'x')); }, PipeDrop::Oversized},
        {"far too long", [](CPeer& peer) { peer.Write(std::string(60'000, 'x')); }, PipeDrop::Oversized},
    };
    const auto options = Options();
    CPipeListener listener(options, ToInbox());
    ASSERT_TRUE(listener.Start());
    std::size_t count = 0;
    for (const auto& hostile : kPeers) {
        SCOPED_TRACE(hostile.what);
        CPeer peer(options.name);
        ASSERT_TRUE(peer);
        hostile.behave(peer);
        CPeer good(options.name);  // served meanwhile
        ASSERT_TRUE(good.Write("good"));
        good.Leave();
        ++count;
        EXPECT_EQ(inbox.Take(count).size(), count);
        const auto reasons = drops.Take(count);
        ASSERT_EQ(reasons.size(), count);
        EXPECT_EQ(reasons.back(), Reason(hostile.reason));
    }
    CPeer(options.name).Leave();  // came and went
    CPeer last(options.name);
    ASSERT_TRUE(last.Write("good"));
    last.Leave();
    EXPECT_EQ(inbox.Take(count + 1).size(), count + 1);
    listener.Stop();
    EXPECT_EQ(listener.Counters().accepted, count + 1);
    EXPECT_EQ(listener.Counters().dropped, count);
    EXPECT_EQ(listener.Counters().empty, 1u);
}

TEST_F(CListenerTest, FiftyClientsAtOnceShareFewInstances) {
    auto options = Options(3);
    options.readTimeoutMilliseconds = 20'000;
    CPipeListener listener(options, [this](std::string message) {
        Sleep(5);
        inbox.Put(std::move(message));
    });
    ASSERT_TRUE(listener.Start());
    std::vector<std::thread> clients;
    std::vector<std::string> sent;
    for (int i = 0; i < 50; ++i) {
        sent.push_back("message " + std::to_string(i));
        clients.emplace_back([name = options.name, text = sent.back()] {
            CPeer peer(name);
            EXPECT_TRUE(peer && peer.Write(text));
        });
    }
    for (std::thread& client : clients) {
        client.join();
    }
    EXPECT_THAT(inbox.Take(50), UnorderedElementsAreArray(sent));
}

// A client that has closed one connection and opens the next: the service must never see the second message first.
TEST_F(CListenerTest, OneClientsMessagesComeInItsOrder) {
    auto options = Options(16);
    options.maxMessageBytes = 1u << 20;
    options.readTimeoutMilliseconds = 20'000;
    std::vector<std::vector<int>> seen(4);
    CPipeListener listener(
        options, CPipeListener::InOrder{
                     0, [&](std::string message, const CPipePeer&) {
                         seen.at(static_cast<unsigned char>(message[0])).push_back(std::atoi(message.c_str() + 1));
                         return Job();
                     }});
    ASSERT_TRUE(listener.Start());
    constexpr int kMessages = 100;
    std::vector<std::thread> clients;
    for (std::size_t who = 0; who < seen.size(); ++who) {
        clients.emplace_back([&, who] {
            for (int i = 0; i < kMessages; ++i) {
                std::string text = static_cast<char>(who) + std::to_string(i) + '\0';
                text.resize(text.size() + (i % 2 == 0 ? 40'000u : 0u));  // long ones take many reads
                CPeer peer(options.name);
                ASSERT_TRUE(peer);
                for (std::size_t at = 0; at < text.size(); at += 1024) {  // as the product's client does
                    ASSERT_TRUE(peer.Write(text.substr(at, 1024)));
                }
            }
        });
    }
    for (std::thread& client : clients) {
        client.join();
    }
    listener.Stop();
    for (const auto& numbers : seen) {
        EXPECT_EQ(numbers.size(), static_cast<std::size_t>(kMessages));
        EXPECT_TRUE(std::ranges::is_sorted(numbers));
    }
}

TEST_F(CListenerTest, AJobRunsOnAWorkerWhileTheNextMessageIsAccepted) {
    const auto options = Options(2);
    CKernelHandle second(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    CPipeListener listener(options, CPipeListener::InOrder{1, [&](const std::string& message, const CPipePeer& peer) {
                                                               EXPECT_EQ(peer.Pid(), GetCurrentProcessId());
                                                               if (message == "second") {
                                                                   SetEvent(second.Get());
                                                                   return Job();
                                                               }
                                                               return Job([&] {
                                                                   WaitForSingleObject(second.Get(), 20'000);
                                                                   inbox.Put("first, after the second");
                                                               });
                                                           }});
    ASSERT_TRUE(listener.Start());
    for (const char* text : {"first", "second"}) {
        CPeer peer(options.name);
        ASSERT_TRUE(peer.Write(text));
    }
    EXPECT_EQ(inbox.Take(1).size(), 1u);
    listener.Stop();
    EXPECT_EQ(listener.Counters().accepted, 2u);
}

TEST_F(CListenerTest, AHandlerThatThrowsIsCountedAndTheServiceGoesOn) {
    const auto options = Options(1);
    CPipeListener listener(options, [this](std::string message) {
        if (message == "bad") {
            throw std::runtime_error("bad");
        }
        inbox.Put(std::move(message));
    });
    ASSERT_TRUE(listener.Start());
    for (const char* text : {"bad", "good"}) {
        CPeer peer(options.name);
        ASSERT_TRUE(peer.Write(text));
    }
    EXPECT_THAT(inbox.Take(1), testing::ElementsAre("good"));
    EXPECT_THAT(drops.Take(1), testing::ElementsAre(Reason(PipeDrop::HandlerThrew)));
}

TEST_F(CListenerTest, StopFinishesWhatItHasAcceptedAndDropsTheRest) {
    auto options = Options(4);
    options.readTimeoutMilliseconds = 20'000;
    CKernelHandle running(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    CPipeListener listener(options, [&](std::string message) {
        SetEvent(running.Get());
        Sleep(100);
        inbox.Put(std::move(message));
    });
    ASSERT_TRUE(listener.Start());
    CPeer whole(options.name);
    ASSERT_TRUE(whole.Write("whole"));
    whole.Leave();
    ASSERT_EQ(WaitForSingleObject(running.Get(), 20'000), WAIT_OBJECT_0);
    CPeer slow(options.name);
    ASSERT_TRUE(slow.Write("slow but "));
    CPeer silent(options.name);
    ASSERT_TRUE(silent);
    std::thread stopper([&] { listener.Stop(); });
    Sleep(50);
    EXPECT_TRUE(slow.Write("complete"));
    slow.Leave();
    stopper.join();
    EXPECT_THAT(inbox.Take(2), testing::UnorderedElementsAre("whole", "slow but complete"));
    EXPECT_THAT(drops.Take(1), testing::ElementsAre(Reason(PipeDrop::Stopping)));
    EXPECT_FALSE(CPeer(options.name));  // the name is gone
}

TEST_F(CListenerTest, ANameIsServedOnce) {
    const auto options = Options();
    CPipeListener first(options, ToInbox());
    ASSERT_TRUE(first.Start());
    CPipeListener second(options, ToInbox());
    EXPECT_FALSE(second.Start());
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    first.Stop();
    CPipeListener third(options, ToInbox());
    EXPECT_TRUE(third.Start());
}

}  // namespace
}  // namespace wrb
