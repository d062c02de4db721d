#include <string>

#include "CommandCatalog.h"
#include "Commands.h"
#include "Console.h"
#include "ExitCode.h"
#include "JsonOutput.h"
#include "Terminal.h"

namespace wrb {
namespace {

constexpr std::size_t kNameColumn = 42;

std::string TextLine(std::size_t number, const CommandEntry& entry) {
    std::string line = std::to_string(number);
    line.insert(0, line.size() < 2 ? 1 : 0, ' ');
    line.append("  ").append(entry.name);
    line.append(line.size() < kNameColumn ? kNameColumn - line.size() : 1, ' ');
    line.append(entry.role);
    return line.append("; fields: ").append(entry.fields).append(entry.Answers() ? "" : "; no answer").append("\n");
}

Json::Value JsonRow(std::size_t number, const CommandEntry& entry) {
    Json::Value row;
    row["number"] = static_cast<Json::UInt>(number);
    row["name"] = std::string(entry.name);
    row["role"] = std::string(entry.role);
    row["fields"] = std::string(entry.fields);
    row["answers"] = entry.Answers();
    return row;
}

}  // namespace

int RunCommands(bool json) {
    Json::Value rows(Json::arrayValue);
    std::string text;
    std::size_t number = 0;
    for (const CommandEntry& entry : CommandCatalog()) {
        if (json) {
            rows.append(JsonRow(number, entry));
        } else {
            text += TextLine(number, entry);
        }
        ++number;
    }
    if (json) {
        PrintJson(rows);
    } else {
        PrintOut(WrapText(text, TerminalColumns()));
    }
    return kExitOk;
}

}  // namespace wrb
