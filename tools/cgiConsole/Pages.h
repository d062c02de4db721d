// The pages of the console. A new page is a row in Pages.cpp, its function, and a template in pages/.
#pragma once

#include <span>
#include <string_view>

#include "Request.h"
#include "View.h"

namespace wrb {

struct Page {
    std::wstring_view name;        // in the address: ?page=NAME
    const char* title;             // of the page and in the menu
    const char* resource;          // its template
    const wchar_t* menu;           // the page whose entry in the menu is marked; its own name: it has an entry
    bool isLive;                   // the script refreshes it
    View (*show)(const Request&);  // for GET, and after a POST that was refused before it came to `act`
    View (*act)(const Request&);   // for POST; null: the page has no form
};

std::span<const Page> Pages();

// The page that the request names; the first one without a name, null for one that does not exist.
const Page* FindPage(const Request& request);

View ShowOverview(const Request& request);
View ShowAgents(const Request& request);
View ShowAgent(const Request& request);
View ShowSettings(const Request& request);
View ChangeSettings(const Request& request);
View ShowUploads(const Request& request);
View ShowLog(const Request& request);
View ChangeLog(const Request& request);
View ShowAudit(const Request& request);

}  // namespace wrb
