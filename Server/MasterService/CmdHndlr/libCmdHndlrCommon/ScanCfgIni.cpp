#include "ScanCfgIni.h"

#include <algorithm>
#include <string>

#include "DebugLog.h"

namespace wrb {
namespace {

constexpr uint32_t kLongestText = 65535;

// Reads one section; the text buffer is made for the first text and serves them all.
class CSectionReader {
  public:
    CSectionReader(CINICache& ini, const ScanGroup& group) : m_ini(ini), m_section(group.section.data()) {}

    void Read(const ScanRow& row, tagScanGroupValues& values) {
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
                values.*row.text = ReadText(row);
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

    const wchar_t* ReadText(const ScanRow& row) {
        m_text.resize(kLongestText + 1);
        m_text.front() = L'\0';
        m_ini.readINIString(m_text.data(), m_section, row.key.data(), row.defaultText,
                            static_cast<uint32_t>(m_text.size()));
        return m_text.c_str();
    }

    CINICache& m_ini;
    const wchar_t* m_section;
    std::wstring m_text;
};

bool WriteText(CINICache& ini, const wchar_t* section, const wchar_t* key, const std::wstring& text) {
    if (text.find_first_of(L"\r\n") != std::wstring::npos) {
        WRB_LOG(kLogError, L"%s - a line break in [%s] %s", L"WriteScanGroupIni", section, key);
        return false;
    }
    return ini.writeINIString(section, key, text.c_str()) != 0;
}

bool WriteRow(CINICache& ini, const wchar_t* section, const ScanRow& row, const tagScanGroupValues& values) {
    const wchar_t* const key = row.key.data();
    switch (row.kind) {
        case ScanRowKind::Bit:
            return ini.writeINIString(section, key, (values.flags & row.bits) != 0 ? L"1" : L"0") != 0;
        case ScanRowKind::Int:
            return ini.writeINIInt(section, key, static_cast<int32_t>(values.*row.number)) != 0;
        case ScanRowKind::Choice:
            return ini.writeINIInt(section, key, static_cast<int32_t>(row.choice->ValueOf(values.flags))) != 0;
        case ScanRowKind::Text:
        case ScanRowKind::CustomActionPair:
            return WriteText(ini, section, key, values.*row.text);
        case ScanRowKind::Uid:
        case ScanRowKind::Empty:
            break;
    }
    return true;
}

}  // namespace

bool WriteScanGroupIni(CINICache& ini, const ScanGroup& group, const tagScanGroupValues& values) {
    return std::ranges::all_of(group.rows,
                               [&](const ScanRow& row) { return WriteRow(ini, group.section.data(), row, values); });
}

void ReadScanGroupIni(CINICache& ini, const ScanGroup& group, tagScanGroupValues& values) {
    values = {};
    CSectionReader section(ini, group);
    for (const ScanRow& row : group.rows) {
        section.Read(row, values);
    }
    if (group.kind == ScanGroupKind::Main) {
        const ScanGroup& exclusion = FindScanGroup(group.type, ScanGroupKind::Exclusion);
        CSectionReader exclusionSection(ini, exclusion);
        for (const ScanRow& row : exclusion.rows) {
            if (row.kind == ScanRowKind::Bit) {
                exclusionSection.Read(row, values);
            }
        }
    }
}

}  // namespace wrb
