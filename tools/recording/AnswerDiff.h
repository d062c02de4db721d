// What is different in two answers.
#pragma once

#include <string>
#include <string_view>

namespace wrb {

// Line by line. A protected text counts as equal to any other, because it is new in each answer. With `isMasked` a mask
// of a text in `recorded` stands for any text.
bool IsSameAnswer(std::wstring_view recorded, std::wstring_view replayed, bool isMasked);

// The lines that differ with three lines round them, in the unified form: " " in both, "-" recorded, "+" replayed.
// UTF-8, control characters as escapes.
std::string AnswerDiff(std::wstring_view recorded, std::wstring_view replayed, bool isMasked);

}  // namespace wrb
