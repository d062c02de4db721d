// Numbered lists in a section: a key an item, numbered from 0, and a key with their count.
//
// A list arrives as one text with "|" between its items. An empty item, so also two separators in a row, ends it.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace wrb {

struct tagIniListKeys {
    std::wstring_view count;
    const wchar_t* item;  // a format for the number: "Item%d" gives Item0, "Item%03d" Item000
};

// The address lists of the web-threat section: approved and blocked, in and out of office.
inline constexpr tagIniListKeys kApprovedUrlsInOffice{L"URLFilterAWSLCount_InOffice", L"URLFilterAWSL_InOffice%03d"};
inline constexpr tagIniListKeys kApprovedUrlsOutOffice{L"URLFilterAWSLCount_OutOffice", L"URLFilterAWSL_OutOffice%03d"};
inline constexpr tagIniListKeys kBlockedUrlsInOffice{L"URLFilterBlackListCount_InOffice",
                                                     L"URLFilterBlackList_InOffice%03d"};
inline constexpr tagIniListKeys kBlockedUrlsOutOffice{L"URLFilterBlackListCount_OutOffice",
                                                      L"URLFilterBlackList_OutOffice%03d"};

// Gives an item the form in which agents get it.
using IniItemProtection = std::function<std::wstring(std::wstring_view item)>;

// A protected item longer than this is cut.
inline constexpr std::size_t kLongestProtectedItem = 1536;

// Appends the items, protected, and behind them their count. Throws what `protect` throws, and for lack of memory.
void AppendIniList(std::wstring& out, const tagIniListKeys& keys, std::wstring_view list,
                   const IniItemProtection& protect);

// Appends the count, and behind it the items as they stand.
void AppendCountedIniList(std::wstring& out, const tagIniListKeys& keys, std::wstring_view list);

// The key of item `number`.
std::wstring FormatIniKey(const wchar_t* format, std::size_t number);

}  // namespace wrb
