#include <windows.h>

#include <algorithm>
#include <iterator>

#include "Pages.h"
#include "ScanCfgIni.h"
#include "ScanDefaults.h"

namespace wrb {
namespace {

// Of the request; null for a name that no group has.
const ScanGroup* FindGroup(const Request& request) {
    const std::wstring name = request.Text(L"group");
    const auto* const found = std::ranges::find(kScanGroups, name, &ScanGroup::name);
    return name.empty() ? kScanGroups.data() : found == std::end(kScanGroups) ? nullptr : found;
}

Data GroupMenu(const ScanGroup& current) {
    Data menu = ListData();
    for (const ScanGroup& group : kScanGroups) {
        Data row;
        row["href"] = "?page=settings&group=" + WideToUtf8(group.name);
        row["title"] = TextData(group.section);
        row["current"] = &group == &current;
        menu.push_back(row);
    }
    return menu;
}

Data OptionsData(const ScanRow& row, const std::wstring& value) {
    Data options = ListData();
    for (const uint32_t number : FieldChoices(row)) {
        Data option;
        option["value"] = NumberData(number);
        option["selected"] = std::to_wstring(number) == value;
        options.push_back(option);
    }
    return options;
}

Data FieldData(const ScanRow& row, const std::wstring& value, bool isRefused) {
    Data field;
    field["key"] = TextData(row.key);
    field["value"] = TextData(value);
    field["switch"] = row.kind == ScanRowKind::Bit;
    field["on"] = value == L"1";
    field["choice"] = row.kind == ScanRowKind::Choice;
    field["number"] = row.kind == ScanRowKind::Int;
    field["text"] = row.kind == ScanRowKind::Text || row.kind == ScanRowKind::CustomActionPair;
    field["highest"] = NumberData(kHighestFormNumber);
    field["longest"] = NumberData(kLongestFormText);
    field["refused"] = isRefused;
    if (row.kind == ScanRowKind::Choice) {
        field["options"] = OptionsData(row, value);
    }
    return field;
}

// The form with the values of the file; with what was typed when `refused` names what is wrong with it.
void AddForm(Data& data, const ScanGroup& group, const Request& request, const std::vector<std::wstring>& refused) {
    ScanGroupValues values;
    ReadScanGroupIni(ScanIniCache(), group, values);
    Data fields = ListData();
    for (const ScanRow& row : group.rows) {
        if (row.IsSetting()) {
            const wchar_t* const typed = refused.empty() ? nullptr : request.Find(row.key.data());
            fields.push_back(FieldData(row, typed != nullptr ? typed : FieldText(row, values),
                                       std::ranges::find(refused, row.key) != refused.end()));
        }
    }
    data["fields"] = std::move(fields);
    data["groups"] = GroupMenu(group);
    data["group"] = TextData(group.name);
    data["section"] = TextData(group.section);
}

std::wstring Listed(const std::vector<std::wstring>& keys) {
    std::wstring text;
    for (const std::wstring& key : keys) {
        text += (text.empty() ? L"" : L", ") + key;
    }
    return text;
}

View Refused(const Request& request, const ScanGroup& group, const char* status, std::wstring note,
             const std::vector<std::wstring>& keys = {}) {
    View view = Refusal(status, std::move(note));
    AddForm(view.data, group, request, keys);
    return view;
}

View Told(const Request& request, const ScanGroup& group, const StoreResult& result) {
    if (!result.refused.empty()) {
        return Refused(request, group, "400 Bad Request", L"Nothing stored. Not a value of: " + Listed(result.refused),
                       result.refused);
    }
    if (result.failed) {
        return Refused(request, group, "500 Internal Server Error", L"wrbscan.ini could not be written.");
    }
    View view;
    view.location =
        L"?page=settings&group=" + std::wstring(group.name) + L"&stored=" + std::to_wstring(result.changed.size());
    return view;
}

// The file is an INI file with the group's section. A key that it lacks, and one with the default below, is not given.
View StoreFile(const Request& request, const ScanGroup& group) {
    constexpr std::wstring_view kAbsent = L"\x7F";
    const std::wstring path = request.UploadPath(L"defaults");
    if (path.empty()) {
        return Refused(request, group, "400 Bad Request", L"No file came along.");
    }
    wchar_t text[kLongestFormText + 3];  // a truncated text still exceeds the longest valid text
    bool found = false;
    const StoreResult result = StoreDefaults(ScanIniCache(), group, [&](const wchar_t* key) -> const wchar_t* {
        GetPrivateProfileStringW(group.section.data(), key, kAbsent.data(), text, static_cast<DWORD>(std::size(text)),
                                 path.c_str());
        found = found || text != kAbsent;
        return text != kAbsent ? text : nullptr;
    });
    return found ? Told(request, group, result)
                 : Refused(request, group, "400 Bad Request",
                           L"The file has no setting in its section [" + std::wstring(group.section) + L"].");
}

}  // namespace

View ShowSettings(const Request& request) {
    const ScanGroup* const group = FindGroup(request);
    if (group == nullptr) {
        return Refusal("404 Not Found", L"There is no such group of settings.");
    }
    View view;
    if (request.Has(L"stored")) {
        const int count = request.Number(L"stored");
        view.note = count == 0   ? L"Nothing to change."
                    : count == 1 ? L"1 setting stored."
                                 : std::to_wstring(count) + L" settings stored.";
    }
    AddForm(view.data, *group, request, {});
    return view;
}

View ChangeSettings(const Request& request) {
    const ScanGroup* const group = FindGroup(request);
    if (group == nullptr) {
        return Refusal("400 Bad Request", L"There is no such group of settings.");
    }
    const std::wstring action = request.Text(L"action");
    if (action == L"store") {
        return Told(request, *group,
                    StoreDefaults(ScanIniCache(), *group, [&](const wchar_t* key) { return request.Find(key); }));
    }
    if (action == L"upload") {
        return StoreFile(request, *group);
    }
    return Refused(request, *group, "400 Bad Request", L"There is no such action.");
}

}  // namespace wrb
