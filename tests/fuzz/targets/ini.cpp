// Lists and values of INI sections: numbered lists against a plain split, the custom action completed from a section,
// and the settings of a section written and read again. The input's lines are values; line "key=value" is in the file.
#include "CustomAction.h"
#include "FakeProfile.h"
#include "Fuzz.h"
#include "IniList.h"
#include "ScanCfgIni.h"
#include "Text.h"

namespace {

// Of one section.
class MemoryProfile final : public FakeProfile {
  public:
    std::string ReadString(const char*, const char* key, const char* defaultText, const char* path) override {
        return FakeProfile::ReadString("", key, defaultText, path);
    }
    int WriteString(const char*, const char* key, const char* value, const char* path, uint32_t& error) override {
        return FakeProfile::WriteString("", key, value, path, error);
    }
    uint32_t ReadInt(const char* section, const char* key, int32_t defaultValue, const char* path) override {
        return static_cast<uint32_t>(
            std::atoi(ReadString(section, key, std::to_string(defaultValue).c_str(), path).c_str()));
    }
};

void CheckList(const std::wstring& list) {
    std::wstring out;
    wrb::AppendPlainIniList(out, {L"Count", L"Item%d"}, list);
    std::wstring items;
    std::size_t count = 0;
    for (std::size_t begin = 0; begin < list.size() && list[begin] != L'|'; ++count) {
        const std::size_t end = std::min(list.find(L'|', begin), list.size());
        items += L"Item" + std::to_wstring(count) + L"=" + list.substr(begin, end - begin) + L"\n";
        begin = std::min(end + 1, list.size());
    }
    REQUIRE(count > wrb::kMostListItems || out == L"Count=" + std::to_wstring(count) + L"\n" + items);
}

void CheckSection(CINICache& ini, const wrb::ScanGroup& group, const std::wstring& text) {
    wrb::ScanGroupValues values;
    values.extList = values.moveDir = values.custAction = values.excludedFolder = text;
    if (WriteScanGroupIni(ini, group, values).complete && wrb::SurvivesAnIniFile(text)) {
        wrb::ScanGroupValues again;
        ReadScanGroupIni(ini, group, again);
        REQUIRE(group.kind != wrb::ScanGroupKind::Main || (again.extList == text && again.moveDir == text));
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    MemoryProfile profile;
    CINICache ini(wrb::SystemClock(), profile);
    std::wstring text;
    const std::string input = wrb::WideToUtf8(WideInput(data, size));
    for (std::size_t begin = 0; begin <= input.size();) {
        const std::string line(input.substr(begin, input.find('\n', begin) - begin).c_str());
        begin += line.size() + 1;
        const std::size_t equals = line.find('=');
        if (equals != line.npos) {
            profile.values["/" + line.substr(0, equals)] = line.substr(equals + 1);
        }
        text = wrb::Utf8ToWide(line);
        CheckList(text);
    }
    const std::wstring before = text;
    wrb::CompleteCustomAction(ini, text);
    REQUIRE(text.starts_with(before));
    CheckSection(ini, wrb::kScanGroups[size / 2 % std::size(wrb::kScanGroups)], before);
    return 0;
}
