// The page that the soak prints, and what counts as a fault.
#pragma once

#include <string>
#include <vector>

#include "Soak.h"

namespace wrb::soak {

// Resources of one service when it had settled after its last start, and at the end.
struct tagFlatness {
    const char* program;
    test::tagResourceUse early;
    test::tagResourceUse late;
    std::size_t allowance;  // bytes of private memory that may come on top
};

struct tagResult {
    unsigned threads = 0;
    double seconds = 0;
    tagLedgerResult ledger;
    std::vector<tagFlatness> flatness;
    std::vector<std::string> faults;  // everything that is not in the tally or the ledger, one line each
};

// Returns true when nothing is wrong.
bool PrintReport(tagField& field, const Tally& tally, const tagResult& result);

}  // namespace wrb::soak
