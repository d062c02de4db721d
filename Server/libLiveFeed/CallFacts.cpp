#include "CallFacts.h"

namespace wrb {
namespace {

thread_local CallFacts* t_facts = nullptr;

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
