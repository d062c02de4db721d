#include "HostBoard.h"

#include <iterator>

namespace wrb {
namespace {

constexpr const char* kNames[] = {"handled", "refused",     "threw",      "dropped",
                                  "waited",  "turned away", "unanswered", "out of memory"};
static_assert(std::size(kNames) == static_cast<std::size_t>(HostCount::kCount));
static_assert(std::atomic<uint64_t>::is_always_lock_free, "several processes share them");

}  // namespace

std::string HostBoard::Text() const {
    std::string text;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        text += (i == 0 ? "" : ", ") + std::string(kNames[i]) + " " + std::to_string(counts[i]);
    }
    return text;
}

}  // namespace wrb
