#include "ScanCfgIni.h"

#include <algorithm>
#include <string>

#include "DebugLog.h"
#include "IniValues.h"
#include "ScanRowText.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr uint32_t kLongestText = 65535;

// Reads one section.
class SectionReader {
  public:
    SectionReader(CINICache& ini, const ScanGroup& group) : m_ini(ini), m_section(group.section.data()) {}

    void Read(const ScanRow& row, ScanGroupValues& values) {
        switch (row.kind) {
            case ScanRowKind::Bit:
                values.flags |= static_cast<int32_t>(ReadNumber(row)) > 0 ? row.bits : 0;
                break;
            case ScanRowKind::Int:
                values.*row.number = ReadNumber(row);
                break;
            case ScanRowKind::Choice:
                values.flags |= row.choice->BitsOf(ReadNumber(row));
                break;
            case ScanRowKind::Text:
            case ScanRowKind::CustomActionPair:
                values.*row.text = ReadIniText(m_ini, m_section, row.key.data(), row.defaultText);
                break;
            case ScanRowKind::Uid:
            case ScanRowKind::Empty:
                break;
        }
    }

  private:
    uint32_t ReadNumber(const ScanRow& row) {
        return m_ini.readINIInt(m_section, row.key.data(), static_cast<int32_t>(row.defaultNumber));
    }

    CINICache& m_ini;
    const wchar_t* m_section;
};

bool IsText(const ScanRow& row) {
    return row.kind == ScanRowKind::Text || row.kind == ScanRowKind::CustomActionPair;
}

}  // namespace

bool FitsAnIniLine(std::wstring_view text) noexcept {
    return text.size() <= kLongestText && text.find_first_of(std::wstring_view(L"\r\n\0", 3)) == text.npos;
}

bool TextsFitLines(const ScanGroup& group, const ScanGroupValues& values, const wchar_t* caller) {
    const auto wrong = std::ranges::find_if(
        group.rows, [&](const ScanRow& row) { return IsText(row) && !FitsAnIniLine(values.*row.text); });
    if (wrong == group.rows.end()) {
        return true;
    }
    WRB_LOG(kLogError, L"%s - no line of a file can hold the text for [%s] %s", caller, group.section.data(),
            wrong->key.data());
    return false;
}

bool SurvivesAnIniFile(std::wstring_view text) {
    const auto isBlank = [](wchar_t character) { return character == L' ' || character == L'\t'; };
    const auto isQuote = [](wchar_t character) { return character == L'"' || character == L'\''; };
    if (text.empty()) {
        return true;
    }
    const std::string stored = WideToAnsi(text);
    return FitsAnIniLine(text) && stored.size() <= kLongestText && AnsiToWide(stored) == text &&
           !isBlank(text.front()) && !isBlank(text.back()) && !(isQuote(text.front()) && text.front() == text.back());
}

ScanIniWrite WriteScanGroupIni(CINICache& ini, const ScanGroup& group, const ScanGroupValues& values,
                               const ScanGroupValues* before) {
    if (!TextsFitLines(group, values, L"WriteScanGroupIni")) {
        return {};
    }
    ScanIniWrite result{.complete = true};
    for (const ScanRow& row : group.rows) {
        const std::wstring text = ScanRowText(row, values);
        if (!row.IsSetting() || (before != nullptr && ScanRowText(row, *before) == text)) {
            continue;
        }
        const bool written = ini.writeINIString(group.section.data(), row.key.data(), text.c_str()) != 0;
        result.complete = written && result.complete;
        result.bitsStored |= written ? row.bits : 0;
    }
    return result;
}

void ReadScanGroupIni(CINICache& ini, const ScanGroup& group, ScanGroupValues& values) {
    values = {};
    SectionReader section(ini, group);
    for (const ScanRow& row : group.rows) {
        section.Read(row, values);
    }
    if (group.kind == ScanGroupKind::Main) {
        const ScanGroup& exclusion = FindScanGroup(group.type, ScanGroupKind::Exclusion);
        SectionReader exclusionSection(ini, exclusion);
        for (const ScanRow& row : exclusion.rows) {
            if (row.kind == ScanRowKind::Bit) {
                exclusionSection.Read(row, values);
            }
        }
    }
}

}  // namespace wrb
