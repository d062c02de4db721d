#include "CallFacts.h"

#include "Compiler.h"

namespace wrb {
namespace {

WRB_THREAD_LOCAL CallFacts* t_facts = nullptr;

}  // namespace

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
