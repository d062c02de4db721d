// From the text of a query or of a form's body to tokens, and from a token to a name and a value.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace wrb {

// Grows in steps of 56 entries and never moves one, so that a body of nothing but one-letter tokens costs linear time.
class TokenArray {
  public:
    void Add(std::string_view token);
    std::size_t Size() const noexcept { return m_size; }
    std::string_view operator[](std::size_t index) const { return (*m_steps[index / kStep])[index % kStep]; }

  private:
    static constexpr std::size_t kStep = 56;
    using Step = std::array<std::string_view, kStep>;

    std::vector<std::unique_ptr<Step>> m_steps;
    std::size_t m_size = 0;
};

// Turns every "+" into a blank, in place, and splits at "&", CR and LF; there are no empty tokens. The text ends at its
// first NUL byte and what follows stays as it was. The tokens point into `text`.
TokenArray SplitQuery(char* text, std::size_t size);

struct NameAndValue {
    std::string_view name;
    std::string_view value;
};

// The two parts of a token, not decoded yet. The name is the first run of characters other than ":", blank, "=" and the
// double quote, the value the next run, behind one separator, of characters other than the double quote, CR and LF.
// Without a name the token is nothing.
NameAndValue SplitToken(std::string_view token) noexcept;

}  // namespace wrb
