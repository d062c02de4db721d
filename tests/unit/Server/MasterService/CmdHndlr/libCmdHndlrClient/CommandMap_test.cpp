// Dispatch of one message, on a command map of the test's own.
#include "CommandMap.h"

#include <gtest/gtest.h>

#include "CmdProtocol.h"
#include "GuardedBytes.h"

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
    constexpr wrb::tagCommandRow kRows[] = {{L"CMDHL_ONE", First},
                                            {L"CMDHL_ONE", Second},
                                            {L"CMDHL_N", nullptr},
                                            {L"CMDHL_N", Second},
                                            {L"CMDHL_X", Second}};
    wrb::CommandMap map;
    wrb::AddCommands(map, kRows);
    wrb::AddCommands(map, kRows);                                                  // a second start adds nothing
    const wrb::test::CGuardedBytes message(text.data(), readable + readable % 2);  // characters have even addresses
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
        {L"CMDHL_N\tx", 18, L""},                        // known, not built; its second row changes nothing
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
    for (std::size_t i = 0; i < 9; ++i) {
        for (const wchar_t other : {L'\0', L'\t', L'\xD800', L'\xFFFF', L'x'}) {
            std::wstring text = L"CMDHL_ONE\tp";
            text[i] = other;
            EXPECT_EQ(Dispatch(text, 22, 22), L"") << i;
        }
    }
    EXPECT_EQ(wrb::DispatchCommand({}, nullptr, 18), 0u);
}

}  // namespace
