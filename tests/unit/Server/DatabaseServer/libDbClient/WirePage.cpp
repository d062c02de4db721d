#include "WirePage.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "ChildProcess.h"

namespace wrb::test {
namespace {

std::vector<std::string> PageLines() {
    std::ifstream page(std::filesystem::path(ProgramFolder() + L"wire-formats.md"));
    std::vector<std::string> lines;
    for (std::string line; std::getline(page, line);) {
        lines.push_back(line);
    }
    if (lines.empty()) {
        throw std::runtime_error("wire-formats.md is not beside the test");
    }
    return lines;
}

std::vector<std::string> CellsOf(const std::string& row) {
    std::vector<std::string> cells;
    std::size_t start = 2;
    for (std::size_t end; (end = row.find(" |", start)) != std::string::npos; start = end + 3) {
        cells.push_back(row.substr(start, end - start));
    }
    return cells;
}

}  // namespace

std::string WirePageExample() {
    std::string bytes;
    bool inside = false;
    for (const std::string& line : PageLines()) {
        if (line.starts_with("```")) {
            inside = line == "```hex";
        } else if (inside) {
            std::istringstream digits(line.substr(0, line.find('|')));
            for (std::string byte; digits >> byte;) {
                bytes += static_cast<char>(std::stoi(byte, nullptr, 16));
            }
        }
    }
    return bytes;
}

std::vector<std::vector<std::string>> WirePageCommands() {
    std::vector<std::vector<std::string>> commands;
    for (const std::string& line : PageLines()) {
        if (line.starts_with("| `DB")) {
            std::vector<std::string> cells = CellsOf(line);
            cells[0] = cells[0].substr(1, cells[0].size() - 2);
            if (cells.size() == 4) {
                commands.push_back(cells);
            }
        }
    }
    return commands;
}

}  // namespace wrb::test
