// The page that the soak prints, and what counts as a fault.
#pragma once

#include <string>
#include <vector>

#include "Chaos.h"
#include "Operator.h"
#include "Soak.h"
#include "Watch.h"

namespace wrb::soak {

// Resources of one service when it had settled after its last start, and at the end.
struct Flatness {
    const char* program;
    test::ResourceUse early;
    test::ResourceUse late;
    std::size_t allowance;  // bytes of private memory that may come on top
};

struct Result {
    unsigned threads = 0;
    uint32_t seed = 0;
    double seconds = 0;
    LedgerResult ledger;
    std::vector<Flatness> flatness;
    std::vector<Chaos::Count> chaos;
    uint64_t filesLeft = 0;           // by killed programs
    std::vector<std::string> faults;  // everything that is not in the tally or the ledger, one line each
};

// Returns true when nothing is wrong.
bool PrintReport(Field& field, const Tally& tally, const Operator& services, const Watch& watch, const Result& result);

}  // namespace wrb::soak
