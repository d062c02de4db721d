// The database server for tests: takes requests apart and answers them as a test says.
//
// It reads the frame and the message with code of its own and none of the product's, so that a fault there does not
// hide in its tests.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "FakePipeService.h"

namespace wrb::test {

struct DbRequest {
    std::string headerMessage;  // the message in the frame; empty when the frame is broken
    std::string request;        // what follows the frame

    // A serialized request begins as every message does; all others are taken for text.
    bool IsMessage() const;

    // Text form: the fields, without the terminating zero after the last one.
    std::vector<std::wstring> Fields() const;

    // Serialized form: the texts of the header and the body, in their order: name, id and, where it is one text, the
    // body.
    std::vector<std::wstring> Texts() const;

    // Command name in either form.
    std::wstring Name() const;

    // Empty when no answer is wanted.
    std::wstring ReplyPipe() const;
};

// UTF-16 bytes without a terminator, as text answers travel.
std::string WideBytes(std::wstring_view text);

// A serialized answer: the header of a message with that name, and the body behind it.
std::string MessageBytes(std::wstring_view name, std::string_view body);

// Serves "DbServerNamePipe", of which there is one on a machine: a test that uses it is registered as SERIAL.
class FakeDbService {
  public:
    // The bytes of the answer. Empty: connects to the reply pipe and closes it. std::nullopt: sends no answer.
    using Answer = std::function<std::optional<std::string>(const DbRequest&)>;

    // `answer` runs on the service's thread for each request that wants an answer; without it nothing is answered.
    explicit FakeDbService(Answer answer = {});

    // All requests so far, once there are at least `count` of them or ten seconds have passed.
    std::vector<DbRequest> WaitFor(std::size_t count) const;

  private:
    void Serve(const Received& received) const;

    Answer m_answer;
    FakePipeService m_pipe;
};

}  // namespace wrb::test
