// Numbered lists in a section: a key an item, numbered from 0, and behind the items the key with their count.
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

// Appends the items of `list`, which has "|" between them, and their count. An empty item, so also two separators in a
// row, ends the list. Throws what `protect` throws, and for lack of memory.
void AppendIniList(std::wstring& out, const tagIniListKeys& keys, std::wstring_view list,
                   const IniItemProtection& protect);

}  // namespace wrb
