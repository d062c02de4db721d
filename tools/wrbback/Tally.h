// How many there are of each name, for people.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace wrb {

using Tally = std::map<std::wstring, uint64_t>;

uint64_t SumOf(const Tally& tally);
std::wstring TallyText(const Tally& tally);  // "20 DB_SET_MSCF, 1 DB_SET_STATUS"

}  // namespace wrb
