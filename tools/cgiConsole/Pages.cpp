#include "Pages.h"

#include <algorithm>
#include <iterator>

namespace wrb {
namespace {

constexpr Page kPages[] = {
    {L"overview", "Overview", "overview", L"overview", true, ShowOverview, nullptr},
    {L"agents", "Agents", "agents", L"agents", false, ShowAgents, nullptr},
    {L"agent", "Agent", "agent", L"agents", false, ShowAgent, nullptr},
    {L"settings", "Settings", "settings", L"settings", false, ShowSettings, ChangeSettings},
    {L"uploads", "Uploads and alerts", "uploads", L"uploads", true, ShowUploads, nullptr},
    {L"log", "Log", "log", L"log", true, ShowLog, ChangeLog},
    {L"audit", "Audit", "audit", L"audit", false, ShowAudit, nullptr},
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
