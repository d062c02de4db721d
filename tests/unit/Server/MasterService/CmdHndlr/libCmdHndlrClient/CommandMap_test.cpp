// Dispatch of one message, on command maps of the test's own.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "CmdProtocol.h"
#include "CommandMap.h"

namespace {

using wrb::CommandMap;
using wrb::DispatchCommand;

std::vector<std::wstring> g_calls;  // handler and the field after the name, one entry a call

void First(CCmdProtocol& message) {
    std::wstring field;
    message >> field;
    g_calls.push_back(L"first:" + field);
}

void Second(CCmdProtocol&) {
    g_calls.emplace_back(L"second");
}

void Throwing(CCmdProtocol&) {
    throw std::runtime_error("the handler's own words");
}

CommandMap TestMap() {
    constexpr wrb::tagCommandRow kRows[] = {{L"CMDHL_ONE", First},     {L"CMDHL_ONE", Second}, {L"CMDHL_TWO", Second},
                                            {L"CMDHL_N", nullptr},     {L"CMDHL_N", Second},   {L"CMDHL_X", Second},
                                            {L"CMDHL_THROW", Throwing}};
    CommandMap map;
    wrb::AddCommands(map, kRows);
    wrb::AddCommands(map, kRows);  // a second start adds nothing
    return map;
}

// A copy of the bytes that ends where readable memory ends, so that a read past the message stops the test.
class CEdgeOfMemory {
  public:
    explicit CEdgeOfMemory(const std::wstring& text, std::size_t bytes) {
        const std::size_t kPage = 4096;
        m_base = static_cast<char*>(VirtualAlloc(nullptr, 2 * kPage, MEM_RESERVE, PAGE_NOACCESS));
        VirtualAlloc(m_base, kPage, MEM_COMMIT, PAGE_READWRITE);
        // An odd size would push the text to an odd address: its last byte gets a whole character.
        char* const start = m_base + kPage - (bytes + bytes % 2);
        std::memcpy(start, text.data(), bytes);
        m_text = reinterpret_cast<const wchar_t*>(start);
    }
    ~CEdgeOfMemory() { VirtualFree(m_base, 0, MEM_RELEASE); }
    CEdgeOfMemory(const CEdgeOfMemory&) = delete;
    CEdgeOfMemory& operator=(const CEdgeOfMemory&) = delete;

    const wchar_t* Text() const { return m_text; }

  private:
    char* m_base;
    const wchar_t* m_text;
};

TEST(CommandMap, TheFirstRowOfANameWins) {
    const CommandMap map = TestMap();
    EXPECT_EQ(map.size(), 5u);
    EXPECT_EQ(map.at(L"CMDHL_ONE"), First);
    EXPECT_EQ(map.at(L"CMDHL_N"), nullptr);
}

TEST(CommandMap, Dispatch) {
    const std::wstring one = L"CMDHL_ONE";
    const struct {
        const char* what;
        std::wstring text;
        uint64_t bytes;
        std::vector<std::wstring> calls;
    } kCases[] = {
        {"a name and nothing else", one, 18, {L"first:"}},
        {"a name and a field", one + L"\tpipe\trest", 38, {L"first:pipe"}},
        {"an odd last byte is dropped", one + L"Z", 19, {L"first:"}},
        {"15 bytes hold 7 characters", L"CMDHL_XY", 15, {L"second"}},
        {"14 bytes are refused whatever they say", L"CMDHL_X", 14, {}},
        {"no bytes", one, 0, {}},
        {"prefix in lower case", L"cmdhl_ONE", 18, {}},
        {"prefix off by one character", L"CMDHL-ONE", 18, {}},
        {"name in lower case", L"CMDHL_one", 18, {}},
        {"a blank belongs to the name", L"CMDHL_ONE ", 20, {}},
        {"cut inside the name", one, 16, {}},
        {"a TAB at once behind the prefix", L"CMDHL_\tONE", 20, {}},
        {"known, not built", L"CMDHL_N\tx", 18, {}},
        {"a NUL belongs to the name", std::wstring(L"CMDHL_ONE\0\tx", 12), 24, {}},
    };
    const CommandMap map = TestMap();
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.what);
        g_calls.clear();
        const CEdgeOfMemory message(row.text, static_cast<std::size_t>(row.bytes));
        EXPECT_EQ(DispatchCommand(map, message.Text(), row.bytes), row.calls.empty() ? 0u : 1u);
        EXPECT_EQ(g_calls, row.calls);
    }
    EXPECT_EQ(DispatchCommand(map, nullptr, 18), 0u);
    EXPECT_EQ(DispatchCommand(map, nullptr, 0xFFFFFFFF), 0u);
}

TEST(CommandMap, SizesThatAreNoSizes) {
    const CommandMap map = TestMap();
    const std::wstring text = L"CMDHL_ONE\tfield";
    const CEdgeOfMemory terminated(text, (text.size() + 1) * sizeof(wchar_t));
    const CEdgeOfMemory shorter(L"CMD", 4 * sizeof(wchar_t));
    const struct {
        const wchar_t* text;
        uint64_t bytes;
        std::vector<std::wstring> calls;
    } kCases[] = {
        {terminated.Text(), 0xFFFFFFFF, {L"first:field"}},
        {terminated.Text(), 0xABCDFFFFFFFF, {L"first:field"}},
        {terminated.Text(), 0x100000012, {L"first:"}},  // the low half counts: 18 bytes
        {terminated.Text(), 0x100000000, {}},
        {terminated.Text(), 0x80000000, {}},
        {terminated.Text(), 0xFFFFFFFE, {}},
        {terminated.Text(), 0xFFFFFFF0, {}},
        {shorter.Text(), 0xFFFFFFFF, {}},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.bytes);
        g_calls.clear();
        EXPECT_EQ(DispatchCommand(map, row.text, row.bytes), row.calls.empty() ? 0u : 1u);
        EXPECT_EQ(g_calls, row.calls);
    }
}

TEST(CommandMap, WhatAHandlerThrowsPassesThrough) {
    const CommandMap map = TestMap();
    try {
        DispatchCommand(map, L"CMDHL_THROW", 22);
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "the handler's own words");
    }
}

// Every truncation, and every change of one character, of a valid message: never more than the one right call.
TEST(CommandMap, DamagedMessages) {
    const CommandMap map = TestMap();
    const std::wstring valid = L"CMDHL_TWO\tp";
    for (std::size_t bytes = 0; bytes <= valid.size() * sizeof(wchar_t); ++bytes) {
        const CEdgeOfMemory message(valid, bytes);
        const bool whole = bytes >= 18 && bytes < 20;  // the name alone
        const bool withField = bytes >= 20;            // the name and its TAB
        EXPECT_EQ(DispatchCommand(map, message.Text(), bytes), whole || withField ? 1u : 0u) << bytes;
    }
    for (std::size_t i = 0; i < 9; ++i) {
        for (const wchar_t other : {L'\0', L'\t', L'\xD800', L'\xFFFF', L'x'}) {
            std::wstring damaged = valid;
            damaged[i] = other;
            EXPECT_EQ(DispatchCommand(map, damaged.data(), damaged.size() * sizeof(wchar_t)), 0u) << i;
        }
    }
}

}  // namespace
