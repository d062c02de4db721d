// Dispatch of one message, on a command map of the test's own; and the command table against docs/commands.md, which
// was written down apart from it.
#include "CommandMap.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "ChildProcess.h"
#include "CmdProtocol.h"
#include "CommandCatalog.h"
#include "GuardedBytes.h"
#include "TempFolder.h"

namespace {

std::wstring g_called;  // handler, and the field after the name

void First(CCmdProtocol& message) {
    std::wstring field;
    message >> field;
    g_called += L"first:" + field;
}

void Second(CCmdProtocol&) {
    g_called += L"second";
}

// Dispatches a copy of the text that ends where readable memory ends. Returns what was called, and checks that the
// result tells whether something was.
std::wstring Dispatch(const std::wstring& text, std::size_t readable, uint64_t bytes) {
    static constexpr auto kSlot = wrb::CommandSlot::CMDHL_ECHO;
    static constexpr wrb::CommandRow kRows[] = {{L"CMDHL_ONE", kSlot, wrb::Written{First}},
                                                {L"CMDHL_ONE", kSlot, wrb::Written{Second}},
                                                {L"CMDHL_X", kSlot, wrb::Written{Second}}};
    wrb::CommandMap map;
    wrb::AddCommands(map, kRows);
    wrb::AddCommands(map, kRows);                                                 // a second start adds nothing
    const wrb::test::GuardedBytes message(text.data(), readable + readable % 2);  // characters have even addresses
    g_called.clear();
    const unsigned result = wrb::DispatchCommand(map, reinterpret_cast<const wchar_t*>(message.Start()), bytes);
    EXPECT_EQ(result, g_called.empty() ? 0u : 1u);
    return g_called;
}

TEST(CommandMap, MessagesByTheirSizeAndNamesToTheLetter) {
    const struct {
        std::wstring text;
        uint64_t bytes;
        const wchar_t* called;
    } kCases[] = {
        {L"CMDHL_ONE", 18, L"first:"},
        {L"CMDHL_ONE\tpipe\trest", 38, L"first:pipe"},
        {L"CMDHL_ONEZ", 19, L"first:"},  // an odd last byte is dropped
        {L"CMDHL_XY", 15, L"second"},    // the least size: seven characters
        {L"CMDHL_X", 14, L""},           // refused whatever it says
        {L"CMDHL_ONE", 0, L""},
        {L"cmdhl_ONE", 18, L""},
        {L"CMDHL_ONE ", 20, L""},
        {L"CMDHL_\tONE", 20, L""},
        {std::wstring(L"CMDHL_ONE\0\tx", 12), 24, L""},  // a NUL belongs to the name
        {L"CMDHL_ONE\tfield", 0xFFFFFFFF, L"first:field"},
        {L"CMDHL_ONE\tfield", 0xABCDFFFFFFFF, L"first:field"},
        {L"CMDHL_ONE\tfield", 0x100000012, L"first:"},  // the low half counts: 18 bytes
        {L"CMDHL_ONE\tfield", 0x100000000, L""},
        {L"CMDHL_ONE\tfield", 0x80000000, L""},
        {L"CMDHL_ONE\tfield", 0xFFFFFFFE, L""},
        {L"CMD", 0xFFFFFFFF, L""},
    };
    for (const auto& row : kCases) {
        // Sizes that are no sizes are about a terminated text.
        const auto readable = row.bytes < 100 ? row.bytes : (row.text.size() + 1) * sizeof(wchar_t);
        EXPECT_EQ(Dispatch(row.text, readable, row.bytes), row.called) << row.bytes;
    }
    EXPECT_EQ(wrb::DispatchCommand({}, nullptr, 18), 0u);
}

// A line of the page: "| 5 | `CMDHL_GET_MS_CFG` | manual-scan settings | reply pipe, uid | ".
std::string PageLine(std::size_t number, const wrb::CommandEntry& entry) {
    std::string line = "\n| " + std::to_string(number) + " | `" + std::string(entry.name) + "` | ";
    line.append(entry.role).append(" | ");
    const auto settings = std::ranges::count(entry.fields, ',');
    return settings > 20 ? line + "uid, " + std::to_string(settings) + " settings: [below](#main-groups) | "
                         : line.append(entry.fields).append(" | ");
}

TEST(CommandTable, EveryRowStandsInItsPlaceOnThePage) {
    const std::string page = wrb::test::ReadAll(wrb::test::ProgramFolder() + L"commands.md");
    std::size_t number = 0;
    for (const wrb::CommandEntry& entry : wrb::CommandCatalog()) {
        const std::string line = PageLine(number++, entry);
        const std::size_t found = page.find(line);
        ASSERT_NE(found, page.npos) << line;
        const std::string answer = page.substr(found + line.size(), 40);
        EXPECT_EQ(answer.starts_with("none"), !entry.Answers()) << line;
        EXPECT_EQ(entry.fields.starts_with("reply pipe"), entry.Answers()) << line;
    }
    EXPECT_EQ(page.find("\n| " + std::to_string(number) + " | `CMDHL_"), page.npos) << "a row that no table has";
}

TEST(CommandTable, AnUpdateNamesTheFieldsOfItsGroup) {
    std::size_t groups = 0;
    for (const wrb::CommandRow& row : wrb::CommandTable()) {
        if (const auto* const update = std::get_if<wrb::ScanUpdate>(&row.handler)) {
            const wrb::ScanGroup& group = wrb::FindScanGroup(update->type, update->kind);
            std::string fields = "uid";
            for (const wrb::ScanRow* const field : group.updateRows) {
                fields.append(", ").append(field->key.begin(), field->key.end());
            }
            EXPECT_EQ(wrb::CommandCatalog()[static_cast<std::size_t>(row.slot)].fields, fields);
            EXPECT_EQ(update->name, L"cmdhl_Set" + std::wstring(group.name));
            ++groups;
        }
    }
    EXPECT_EQ(groups, wrb::kScanGroupCount);
}

}  // namespace
