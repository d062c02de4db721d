// A service's end of a pipe, for tests: one thread, one connection at a time, everything recorded.
//
// It has code of its own and none of the product's pipe server, so that a fault there does not hide in its tests.
#pragma once

#include <windows.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Handle.h"

namespace wrb::test {

// The bytes as UTF-16.
std::wstring WideText(std::string_view bytes);

// What one client wrote between connecting and closing.
struct Received {
    std::string bytes;
    std::vector<std::size_t> pieces;  // the size of each write

    // The bytes as UTF-16, without a terminating zero.
    std::wstring Text() const;
};

class FakePipeService {
  public:
    using Handler = std::function<void(const Received&)>;

    // Serves the pipe \\.\pipe\NAME from now on. `handler` runs on the service's thread after each message, before the
    // next client can connect. Throws std::runtime_error when the name is taken.
    explicit FakePipeService(const std::wstring& name, Handler handler = {});

    // Stops, whatever the client is doing.
    ~FakePipeService();

    // All messages so far, once there are at least `count` of them or ten seconds have passed.
    std::vector<Received> WaitFor(std::size_t count) const;

  private:
    void Serve();
    bool ReceiveOne(Received& received);

    Handler m_handler;
    KernelHandle m_stop;
    KernelHandle m_event;
    FileHandle m_pipe;
    std::vector<char> m_piece;
    mutable std::mutex m_lock;
    mutable std::condition_variable m_changed;
    std::vector<Received> m_messages;
    std::thread m_thread;
};

// Opens the pipe for writing with no code of the product's client. Waits while the pipe is busy. Empty on failure.
FileHandle OpenPipeForWriting(const std::wstring& name);

// Writes the bytes as one piece, whatever their number.
bool WritePiece(const FileHandle& pipe, std::string_view bytes);

// `count` bytes that differ from their neighbours and from those at other offsets of a buffer's size; the same for the
// same seed.
std::string PatternBytes(std::size_t count, uint32_t seed = 12345);

}  // namespace wrb::test
