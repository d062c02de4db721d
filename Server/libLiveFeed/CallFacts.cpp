#include "CallFacts.h"

#include <new>

#include "Compiler.h"

namespace wrb {
namespace {

WRB_THREAD_LOCAL CallFacts* t_facts = nullptr;

}  // namespace

void CallFacts::NoteAnswer(const void* body, uint64_t bytes, bool isSent) noexcept {
    answerBytes += bytes;
    hasAnswered = true;
    hasFailed |= !isSent;
    if (bytes == 0 || mostAnswer == 0) {
        return;
    }
    isAnswerCut |= bytes > mostAnswer - answer.size();
    try {
        if (!isAnswerCut) {
            answer.append(static_cast<const char*>(body), bytes);
        }
    } catch (const std::bad_alloc&) {
        isAnswerCut = true;
    }
}

CallFacts* CurrentCallFacts() noexcept {
    return t_facts;
}

CallFactsScope::CallFactsScope(CallFacts& facts) noexcept {
    t_facts = &facts;
}

CallFactsScope::~CallFactsScope() {
    t_facts = nullptr;
}

}  // namespace wrb
