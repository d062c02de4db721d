#include "ConsoleQueue.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string_view>
#include <thread>
#include <utility>

#include "Console.h"

namespace wrb {

class ConsoleQueue::Printer {
  public:
    using Print = void (*)(std::string_view);

    explicit Printer(const std::string& program) : m_prefix(program + ": ") {}

    void Put(Print print, const std::string& line) noexcept {
        {
            const std::lock_guard guard(m_lock);
            try {
                TryPut(print, m_prefix + line + "\n");
            } catch (...) {
                ++m_dropped;
            }
        }
        m_changed.notify_all();
    }

    void Run() {
        std::unique_lock lock(m_lock);
        for (;;) {
            m_changed.wait(lock, [this] { return m_finishing || !m_texts.empty(); });
            if (m_finishing) {
                return;
            }
            const Text& text = m_texts.front();  // stays until it is printed; Put does not move it
            lock.unlock();
            text.print(text.text);
            lock.lock();
            m_bytes -= text.text.size();
            m_texts.pop_front();
            m_changed.notify_all();
        }
    }

    void Drain(std::chrono::milliseconds limit) {
        std::unique_lock lock(m_lock);
        m_changed.wait_for(lock, limit, [this] { return m_texts.empty(); });
    }

    void Finish() {
        {
            const std::lock_guard guard(m_lock);
            m_finishing = true;
        }
        m_changed.notify_all();
    }

  private:
    struct Text {
        Print print;
        std::string text;
    };

    // With the lock.
    void TryPut(Print print, std::string text) {
        if (m_dropped != 0) {
            text.insert(0, m_prefix + std::to_string(m_dropped) + " lines are dropped, nobody read them in time\n");
        }
        if (text.size() > kMostBytes - m_bytes) {
            ++m_dropped;
            return;
        }
        m_texts.push_back({print, std::move(text)});
        m_bytes += m_texts.back().text.size();
        m_dropped = 0;
    }

    const std::string m_prefix;
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<Text> m_texts;
    std::size_t m_bytes = 0;  // of all texts
    uint64_t m_dropped = 0;   // lines, since the last one that was taken
    bool m_finishing = false;
};

// The thread is not joined: a write to a pipe that nobody reads does not end.
ConsoleQueue::ConsoleQueue(const std::string& program) : m_printer(std::make_shared<Printer>(program)) {
    std::thread([printer = m_printer] { printer->Run(); }).detach();
}

ConsoleQueue::~ConsoleQueue() {
    m_printer->Finish();
}

void ConsoleQueue::Out(const std::string& line) noexcept {
    m_printer->Put(PrintOut, line);
}
void ConsoleQueue::Err(const std::string& line) noexcept {
    m_printer->Put(PrintErr, line);
}

void ConsoleQueue::Drain(std::chrono::milliseconds limit) const {
    m_printer->Drain(limit);
}

}  // namespace wrb
