#include "SettingTarget.h"

#include <algorithm>
#include <iterator>

#include "DbAgent.h"
#include "DbListing.h"
#include "Failure.h"
#include "HomeFolder.h"
#include "INICache.h"
#include "IgnoringCase.h"
#include "NearestName.h"
#include "ServiceChecks.h"
#include "Text.h"

namespace wrb {
namespace {

// A section's name may have a point.
SettingName NameOf(const std::wstring& text) {
    const std::vector<std::wstring_view> known = KnownSections();
    const bool isSection =
        std::ranges::any_of(known, [&](std::wstring_view each) { return EqualIgnoringCase(each, text); });
    return isSection ? SettingName{text, {}} : ParseSettingName(text);
}

int FailUnknownSection(const std::wstring& section) {
    const std::vector<std::wstring_view> known = KnownSections();
    const std::wstring_view nearest = NearestName(section, known);
    return EqualIgnoringCase(nearest, section)
               ? Fail(kExitFailed, "[" + WideToUtf8(section) + "] is empty for this agent, or has no server-wide form")
               : Fail(kExitUsage, "no section \"" + WideToUtf8(section) + "\"" + DidYouMean(nearest));
}

const char* WhyUnreadable(const std::wstring& uid, const std::wstring& section) {
    return uid.empty()                           ? ""
           : FindScanSection(section) != nullptr ? ": the agent has no settings of its own"
           : section == L"Web Threat Protection" ? ": the server has no valid protection key; see 'wrbctl status'"
                                                 : "; the debug log says why";
}

// Keeps the lines of the key. 0, or the exit code of a failure that has been reported.
int KeepKey(const SettingName& name, std::vector<Explanation>& lines) {
    std::vector<std::wstring> keys;
    std::ranges::transform(lines, std::back_inserter(keys), &Explanation::key);
    std::erase_if(lines, [&](const Explanation& line) { return !EqualIgnoringCase(line.key, name.key); });
    const std::vector<std::wstring_view> candidates(keys.begin(), keys.end());
    return lines.empty() ? Fail(kExitUsage, "[" + WideToUtf8(name.section) + "] has no key \"" + WideToUtf8(name.key) +
                                                "\"" + DidYouMean(NearestName(name.key, candidates)))
                         : kExitOk;
}

}  // namespace

void BindIniCaches() {
    const std::wstring home = HomeFolder();
    ScanIniCache().init((home + kScanIniFile).c_str(), 0);
    ServerIniCache().init((home + kServerIniFile).c_str(), 0);
}

int CheckDatabaseServes() {
    const StatusItem store = CheckDatabase();
    return store.health == Health::Down
               ? Fail(kExitServiceNotRunning, "the store: " + store.text + "; does wrbback serve?")
               : kExitOk;
}

bool ListAgents(std::vector<std::wstring>& uids, std::size_t most) {
    DbListQuery query{.table = L"agents", .search = {}, .order = 1, .first = 0, .rows = kMostListedRows};
    DbListing page;
    do {
        if (!ReadDbListing(query, page)) {
            Fail(kExitFailed, "the database does not list its agents; the debug log says why");
            return false;
        }
        for (std::size_t row = 0; row < page.Rows() && uids.size() < most; ++row) {
            uids.push_back(page.Cell(row, 0));
        }
        query.first += static_cast<uint32_t>(page.Rows());
    } while (page.Rows() != 0 && uids.size() < most);
    return true;
}

int CheckTarget(const std::wstring& uid) {
    if (uid.empty()) {
        return kExitOk;
    }
    if (const int code = CheckDatabaseServes(); code != kExitOk) {
        return code;
    }
    return IsKnownAgent(uid.c_str()) ? kExitOk
                                     : Fail(kExitFailed, "the database does not know the agent " + WideToUtf8(uid) +
                                                             "; 'wrbback agents' lists those that it knows");
}

int FailUnreadable(const std::wstring& uid, const std::vector<std::wstring>& sections) {
    for (auto section = sections.begin(); section != sections.end();) {
        const std::string why = WhyUnreadable(uid, *section);
        std::string names;
        for (; section != sections.end() && WhyUnreadable(uid, *section) == why; ++section) {
            names += (names.empty() ? "[" : ", [") + WideToUtf8(*section) + "]";
        }
        Fail(kExitFailed, names + " cannot be read" + why);
    }
    return kExitFailed;
}

bool CheckCount(std::size_t count, std::size_t least, std::size_t most, const char* usage) {
    const bool good = count >= least && count <= most;
    if (!good) {
        Fail(kExitUsage, std::string("usage: wrbctl ") + usage);
    }
    return good;
}

int ReadSelection(Selection& selection) {
    BindIniCaches();
    if (const int code = CheckTarget(selection.uid); code != kExitOk) {
        return code;
    }
    AgentExplanation all = ExplainAgent(selection.uid, selection.name.section);
    if (!all.unreadable.empty()) {
        const int code = FailUnreadable(selection.uid, all.unreadable);
        if (all.lines.empty() || !selection.name.section.empty()) {
            return code;
        }
    }
    if (all.lines.empty()) {
        return FailUnknownSection(selection.name.section);
    }
    selection.lines = std::move(all.lines);
    return selection.name.key.empty() ? kExitOk : KeepKey(selection.name, selection.lines);
}

int ReadSelection(const std::vector<std::string>& arguments, bool server, const char* subcommand,
                  Selection& selection) {
    const std::size_t first = server ? 0 : 1;
    const std::string usage = std::string(subcommand) + " UID|--server [SECTION[.KEY]]";
    if (!CheckCount(arguments.size(), first, first + 1, usage.c_str())) {
        return kExitUsage;
    }
    selection.uid = server ? std::wstring() : Utf8ToWide(arguments[0]);
    if (arguments.size() > first) {
        selection.name = NameOf(Utf8ToWide(arguments[first]));
    }
    return ReadSelection(selection);
}

}  // namespace wrb
