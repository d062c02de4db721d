// What happens in the course of one command, counted by those who do it. Only a command that is traced has any.
#pragma once

#include <cstdint>

namespace wrb {

struct CallFacts {
    uint64_t answerBytes = 0;  // that were sent
    uint32_t requests = 0;     // to the database server
    bool hasFailed = false;    // the command said so, or its answer could not be sent
};

// Of the command that runs on this thread; null while it is not traced.
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
