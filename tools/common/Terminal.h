// What the standard streams lead to, and text that is laid out for it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace wrb {

// The width of the console that the standard output leads to; nothing when it leads elsewhere.
std::optional<std::size_t> TerminalColumns();

// Whether the standard output is a console that takes escape sequences, and the variable NO_COLOR is unset or empty.
bool UsesColour();

enum class Colour { Green, Yellow, Red, Dim };

// The text in that colour where colours are used.
std::string Coloured(const std::string& text, Colour colour);

// The first letters that fit, with "..." at the end of a text that is cut.
std::wstring CutTo(std::wstring text, std::size_t columns);

// Rows of cells in aligned columns, two blanks between them. Control characters are shown as escapes.
class TextTable {
  public:
    explicit TextTable(std::vector<std::wstring> heads = {}) : m_heads(std::move(heads)) {}

    void Add(std::vector<std::wstring> cells) { m_rows.push_back(std::move(cells)); }
    bool IsEmpty() const { return m_rows.empty(); }

    // UTF-8, each row cut to the columns, if any.
    std::string Text(std::optional<std::size_t> columns) const;

  private:
    std::vector<std::wstring> m_heads;
    std::vector<std::vector<std::wstring>> m_rows;
};

// How far a work has come, on one line of the standard error, from its second second on. Prints nothing when that is no
// console.
class Progress {
  public:
    Progress(std::string what, std::size_t total);
    ~Progress();  // clears the line
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Step();

  private:
    const std::string m_what;
    const std::size_t m_total;
    const bool m_isShown;
    std::size_t m_done = 0;
    unsigned long long m_next;  // on the tick clock
    bool m_hasLine = false;
};

}  // namespace wrb
