#include "Tally.h"

namespace wrb {

uint64_t SumOf(const Tally& tally) {
    uint64_t sum = 0;
    for (const auto& [name, number] : tally) {
        sum += number;
    }
    return sum;
}

std::wstring TallyText(const Tally& tally) {
    std::wstring text;
    for (const auto& [name, number] : tally) {
        text += (text.empty() ? L"" : L", ") + std::to_wstring(number) + L' ' + name;
    }
    return text;
}

}  // namespace wrb
