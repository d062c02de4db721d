// What the standard streams lead to, and text that is laid out for it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace wrb {

// The characters of a line of the console that the standard output leads to; nothing when it leads elsewhere.
std::optional<std::size_t> TerminalColumns();

// Whether the standard output is a console that takes escape sequences, and the variable NO_COLOR is unset or empty.
bool UsesColour();

enum class Colour { Green, Yellow, Red, Dim };

// The text in that colour where colours are used.
std::string Coloured(const std::string& text, Colour colour);

// The first letters that fit, with "..." at the end of a text that is cut.
std::wstring CutTo(std::wstring text, std::size_t columns);

// The lines of the text, UTF-8, none of them longer than the columns, if any. A line breaks between two of its columns
// (which have two blanks or more between them) or at a blank, and goes on under its last column that leaves half of
// the width.
std::string WrapText(const std::string& text, std::optional<std::size_t> columns);

// Rows of cells in aligned columns, two blanks between them. Control characters are shown as escapes.
class TextTable {
  public:
    explicit TextTable(std::vector<std::wstring> heads = {}) : m_heads(std::move(heads)) {}

    void Add(std::vector<std::wstring> cells) { m_rows.push_back(std::move(cells)); }
    bool IsEmpty() const { return m_rows.empty(); }

    // UTF-8, wrapped to the columns, if any.
    std::string Text(std::optional<std::size_t> columns) const;

  private:
    std::vector<std::wstring> m_heads;
    std::vector<std::vector<std::wstring>> m_rows;
};

// One line of the standard error that each text replaces. Nothing when that is no console.
class StatusLine {
  public:
    StatusLine();
    ~StatusLine();  // clears it
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    void Show(const std::string& text);

  private:
    const bool m_isShown;
    std::size_t m_width = 0;  // of what stands there
};

// Shows on the status line how many steps of a task are done. A task of less than a second shows nothing.
class Progress {
  public:
    Progress(std::string what, std::size_t total);

    void Step();

  private:
    const std::string m_what;
    const std::size_t m_total;
    std::size_t m_done = 0;
    unsigned long long m_next;  // on the tick clock
    StatusLine m_line;
};

}  // namespace wrb
