// What happens in the course of one command, counted by those who do it. Only a command that is traced or
// recorded has any.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace wrb {

struct CallFacts {
    uint64_t answerBytes = 0;    // that were sent
    uint32_t requests = 0;       // to the database server
    bool hasFailed = false;      // the command said so, or its answer could not be sent
    bool hasAnswered = false;    // an answer was sent, or tried
    bool isAnswerCut = false;    // `answer` is not whole: it is too long, or there is no memory
    std::size_t mostAnswer = 0;  // bytes that are wanted in `answer`
    std::string answer;          // its bytes

    void NoteAnswer(const void* body, uint64_t bytes, bool isSent) noexcept;
};

// Of the command that runs on this thread; null while it is neither traced nor recorded.
CallFacts* CurrentCallFacts() noexcept;

// Makes `facts` those of this thread.
class CallFactsScope {
  public:
    explicit CallFactsScope(CallFacts& facts) noexcept;
    ~CallFactsScope();
    CallFactsScope(const CallFactsScope&) = delete;
    CallFactsScope& operator=(const CallFactsScope&) = delete;
};

}  // namespace wrb
