// The frame around every page: menu, note, style sheet.
#pragma once

#include <string>

#include "Pages.h"

namespace wrb {

struct Frame {
    const Page* page = nullptr;  // null: the note alone
    std::wstring user{};
    std::string token{};  // for the page's forms
};

// The address of this program, for links and forms; a query follows.
std::string SelfAddress();

// The whole document.
std::string RenderPage(const Frame& frame, View& view);

}  // namespace wrb
