#include "Pages.h"

#include <algorithm>
#include <iterator>

namespace wrb {
namespace {

constexpr Page kPages[] = {
    {L"overview", "Overview", "overview", true, true, ShowOverview, nullptr},
    {L"settings", "Settings", "settings", true, false, ShowSettings, ChangeSettings},
    {L"uploads", "Uploads and alerts", "uploads", true, true, ShowUploads, nullptr},
};

}  // namespace

std::span<const Page> Pages() {
    return kPages;
}

const Page* FindPage(const Request& request) {
    const std::wstring name = request.Text(L"page");
    if (name.empty()) {
        return kPages;
    }
    const auto* const found = std::ranges::find(kPages, name, &Page::name);
    return found == std::end(kPages) ? nullptr : found;
}

}  // namespace wrb
