// Numbered lists in a section: a key an item, numbered from 0, and a key with their count.
//
// A list arrives as one text with "|" between its items. An empty item, so also two separators in a row, ends it. What
// follows the first kMostListItems is left out, with a line in the log.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace wrb {

// An answer must not grow without end. The three digits of "%03d" are a least width: item 1000 is Item1000.
inline constexpr std::size_t kMostListItems = 65'535;

// A protected item longer than this is cut, with a line in the log, and cannot be read.
inline constexpr std::size_t kLongestProtectedItem = 1536;

struct IniListKeys {
    std::wstring_view count;
    const wchar_t* item;  // a format for the number: "Item%d" gives Item0, "Item%03d" Item000
};

// Gives an item the form in which agents get it.
using IniItemProtection = std::function<std::wstring(std::wstring_view item)>;

// Appends the items, protected, then their count. Throws what `protect` throws, and for lack of memory.
void AppendProtectedIniList(std::wstring& out, const IniListKeys& keys, std::wstring_view list,
                            const IniItemProtection& protect);

// Appends the count, then the items as they are.
void AppendPlainIniList(std::wstring& out, const IniListKeys& keys, std::wstring_view list);

// The key of item `number`.
std::wstring FormatIniKey(const wchar_t* format, std::size_t number);

}  // namespace wrb
