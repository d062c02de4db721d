#include "AnswerDiff.h"

#include <algorithm>
#include <vector>

#include "Mask.h"
#include "StringProtection.h"
#include "Text.h"
#include "VisibleText.h"

namespace wrb {
namespace {

constexpr std::size_t kContextLines = 3;
constexpr std::size_t kMostPairs = 4'000'000;  // of lines that are compared with each other

using Lines = std::vector<std::wstring_view>;

Lines SplitAt(std::wstring_view text, wchar_t separator) {
    Lines lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        lines.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

// Of a line KEY=VALUE; else the line.
std::wstring_view ValueOf(std::wstring_view line) {
    return line.substr(line.find(L'=') + 1);
}

bool IsSameField(std::wstring_view recorded, std::wstring_view replayed) {
    if (recorded == replayed || (IsTextMask(recorded) && !replayed.empty())) {
        return true;
    }
    const std::wstring_view value = ValueOf(recorded);
    const std::wstring_view key = recorded.substr(0, recorded.size() - value.size());
    return !key.empty() && IsTextMask(value) && replayed.starts_with(key) && replayed.size() > key.size();
}

bool IsSameLine(std::wstring_view recorded, std::wstring_view replayed, bool isMasked) {
    if (recorded == replayed) {
        return true;
    }
    if (isMasked) {
        return std::ranges::equal(SplitAt(recorded, L'\t'), SplitAt(replayed, L'\t'), IsSameField);
    }
    const std::size_t at = recorded.find(kProtectedPrefix);
    return at != recorded.npos && recorded.substr(0, at) == replayed.substr(0, at) &&
           replayed.substr(at).starts_with(kProtectedPrefix);
}

struct Edit {
    char kind;  // ' ', '-' or '+'
    std::wstring_view line;
};

class Differ {
  public:
    Differ(std::wstring_view recorded, std::wstring_view replayed, bool isMasked)
        : m_left(SplitAt(recorded, L'\n')), m_right(SplitAt(replayed, L'\n')), m_isMasked(isMasked) {}

    std::vector<Edit> Edits() {
        const std::size_t common = std::min(m_left.size(), m_right.size());
        while (m_before < common && IsSame(m_before, m_before)) {
            ++m_before;
        }
        while (m_after < common - m_before && IsSame(m_left.size() - 1 - m_after, m_right.size() - 1 - m_after)) {
            ++m_after;
        }
        std::vector<Edit> edits;
        Add(edits, ' ', m_left, 0, m_before);
        AddMiddle(edits);
        Add(edits, ' ', m_left, m_left.size() - m_after, m_left.size());
        return edits;
    }

  private:
    bool IsSame(std::size_t left, std::size_t right) const {
        return IsSameLine(m_left[left], m_right[right], m_isMasked);
    }

    static void Add(std::vector<Edit>& edits, char kind, const Lines& lines, std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            edits.push_back({kind, lines[i]});
        }
    }

    // By the longest common sequence of lines; where the lines are too many, all are replaced.
    void AddMiddle(std::vector<Edit>& edits) const {
        const std::size_t rows = m_left.size() - m_before - m_after;
        const std::size_t columns = m_right.size() - m_before - m_after;
        if (rows == 0 || columns == 0 || rows > kMostPairs / columns) {
            Add(edits, '-', m_left, m_before, m_before + rows);
            Add(edits, '+', m_right, m_before, m_before + columns);
            return;
        }
        const std::size_t width = columns + 1;
        std::vector<uint32_t> lengths((rows + 1) * width);  // of the sequence from a row and a column on
        for (std::size_t row = rows; row-- > 0;) {
            for (std::size_t column = columns; column-- > 0;) {
                lengths[row * width + column] =
                    IsSame(m_before + row, m_before + column)
                        ? lengths[(row + 1) * width + column + 1] + 1
                        : std::max(lengths[(row + 1) * width + column], lengths[row * width + column + 1]);
            }
        }
        std::size_t row = 0;
        std::size_t column = 0;
        while (row < rows && column < columns) {
            if (IsSame(m_before + row, m_before + column)) {
                edits.push_back({' ', m_left[m_before + row++]});
                ++column;
            } else if (lengths[(row + 1) * width + column] >= lengths[row * width + column + 1]) {
                edits.push_back({'-', m_left[m_before + row++]});
            } else {
                edits.push_back({'+', m_right[m_before + column++]});
            }
        }
        Add(edits, '-', m_left, m_before + row, m_before + rows);
        Add(edits, '+', m_right, m_before + column, m_before + columns);
    }

    const Lines m_left;
    const Lines m_right;
    const bool m_isMasked;
    std::size_t m_before = 0;  // lines that are the same at the beginning
    std::size_t m_after = 0;   // at the end
};

}  // namespace

bool IsSameAnswer(std::wstring_view recorded, std::wstring_view replayed, bool isMasked) {
    return recorded == replayed ||
           std::ranges::equal(SplitAt(recorded, L'\n'), SplitAt(replayed, L'\n'),
                              [&](auto left, auto right) { return IsSameLine(left, right, isMasked); });
}

std::string AnswerDiff(std::wstring_view recorded, std::wstring_view replayed, bool isMasked) {
    const std::vector<Edit> edits = Differ(recorded, replayed, isMasked).Edits();
    std::vector<bool> isShown(edits.size());
    for (std::size_t i = 0; i < edits.size(); ++i) {
        if (edits[i].kind != ' ') {
            const std::size_t begin = i - std::min(i, kContextLines);
            std::fill(isShown.begin() + static_cast<std::ptrdiff_t>(begin),
                      isShown.begin() + static_cast<std::ptrdiff_t>(std::min(i + kContextLines + 1, edits.size())),
                      true);
        }
    }
    std::string text;
    bool isGap = false;
    for (std::size_t i = 0; i < edits.size(); ++i) {
        if (!isShown[i]) {
            isGap = true;
            continue;
        }
        text += isGap ? "@@\n" : "";
        isGap = false;
        text += edits[i].kind + WideToUtf8(VisibleText(edits[i].line)) + "\n";
    }
    return text;
}

}  // namespace wrb
