#include "Frame.h"

#include <windows.h>

#include <stdexcept>

#include "RequestOrigin.h"
#include "Resources.h"

namespace wrb {
namespace {

std::string Render(const char* resource, const Data& data) {
    kainjow::mustache::mustache page{std::string(ResourceText(resource))};
    std::string text = page.render(data);
    if (!page.is_valid()) {
        throw std::logic_error(std::string(resource) + ": " + page.error_message());
    }
    return text;
}

// Parts of templates, which pages name as partials.
void AddPartials(Data& data) {
    for (const char* const name : {"chart", "listhead", "listheads", "listfoot"}) {
        data[name] = std::string(ResourceText(name));
    }
}

std::wstring ComputerName() {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
    GetComputerNameW(name, &size);
    return name;
}

Data MenuData(const Page* current) {
    Data menu = ListData();
    for (const Page& page : Pages()) {
        if (page.name == page.menu) {
            Data row;
            row["href"] = "?page=" + WideToUtf8(page.name);
            row["title"] = page.title;
            row["current"] = current != nullptr && page.name == current->menu;
            menu.push_back(row);
        }
    }
    return menu;
}

}  // namespace

std::string SelfAddress() {
    return WideToUtf8(GatewayVariable(L"SCRIPT_NAME"));
}

std::string RenderPage(const Frame& frame, View& view) {
    const bool isBad = view.kind == NoteKind::Bad;
    const bool isRead = GatewayVariable(L"REQUEST_METHOD") == L"GET";
    Data data;
    data["title"] = frame.page == nullptr ? "Warrenby" : frame.page->title;
    data["self"] = SelfAddress();
    data["style"] = ResourceVersion("style");
    data["script"] = ResourceVersion("script");
    data["live"] = frame.page != nullptr && frame.page->isLive;
    data["menu"] = MenuData(frame.page);
    data["server"] = TextData(ComputerName());
    data["user"] = TextData(frame.user);
    data["hasUser"] = !frame.user.empty();
    data["note"] = TextData(view.note);
    data["hasNote"] = !view.note.empty();
    data["bad"] = isBad;
    data["outcome"] = !isBad ? "Done." : isRead ? "Not shown." : "Not done.";
    if (frame.page != nullptr) {
        view.data["self"] = SelfAddress();
        view.data["token"] = frame.token;
        view.data["mayWrite"] = !frame.user.empty() && !frame.token.empty();
        AddPartials(view.data);
        data["body"] = Render(frame.page->resource, view.data);
    }
    return Render("frame", data);
}

}  // namespace wrb
