// Texts of a program that serves, on their way to the standard streams.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

namespace wrb {

// One thread prints, in order. A console or pipe that nobody reads holds up that thread alone: who has a text to print
// never waits. At most kMostBytes wait to be printed. What comes on top is dropped and counted, and the next text that
// there is room for tells how many were. Any thread.
class ConsoleQueue {
  public:
    static constexpr std::size_t kMostBytes = 64 * 1024;

    // How long the end of a program waits for its last texts.
    static constexpr std::chrono::milliseconds kPatience{5'000};

    // Every line begins with "PROGRAM: ". Throws std::system_error when the thread cannot start.
    explicit ConsoleQueue(const std::string& program);
    ~ConsoleQueue();  // drops what waits
    ConsoleQueue(const ConsoleQueue&) = delete;
    ConsoleQueue& operator=(const ConsoleQueue&) = delete;

    // Each is one line, without its end.
    void Out(const std::string& line) noexcept;
    void Err(const std::string& line) noexcept;

    // Returns when everything is printed, or after `limit`.
    void Drain(std::chrono::milliseconds limit) const;

  private:
    class Printer;
    const std::shared_ptr<Printer> m_printer;  // the thread has a share: it may be blocked when the queue goes away
};

}  // namespace wrb
