// What a page function returns: the values for the page's template, or the address to go on to.
#pragma once

#include <kainjow/mustache.hpp>
#include <string>
#include <string_view>

#include "Text.h"

namespace wrb {

// A value of a template: text in UTF-8, a truth, a list, or an object. Templates escape texts.
using Data = kainjow::mustache::data;

inline Data ListData() {
    return Data(Data::type::list);
}
inline Data TextData(std::wstring_view text) {
    return {WideToUtf8(text)};
}
template <typename Number>
Data NumberData(Number number) {
    return {std::to_string(number)};
}

enum class NoteKind : bool { Good, Bad };

struct View {
    const char* status = "200 OK";  // of the HTTP answer
    std::wstring note{};            // above the page; empty: none
    NoteKind kind = NoteKind::Good;
    std::wstring location{};  // not empty: the browser goes to this query of the console instead
    Data data{};
};

// A view that refuses: the note says why.
inline View Refusal(const char* status, std::wstring note) {
    return {.status = status, .note = std::move(note), .kind = NoteKind::Bad};
}

}  // namespace wrb
