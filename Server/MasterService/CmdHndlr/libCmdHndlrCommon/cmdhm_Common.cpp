#include "cmdhm_Common.h"

#include "DebugLog.h"
#include "INICache.h"
#include "IniText.h"

namespace wrb {

bool GetIniSection(std::wstring& out, const wchar_t* section) {
    std::wstring lines;
    if (!ScanIniCache().readINISection(lines, section)) {
        WRB_LOG(kLogError, L"%s - the section [%s] has more than %u characters", L"GetIniSection", section,
                kLongestSection);
        return false;
    }
    AppendIniSection(out, section);
    out += lines;
    return true;
}

}  // namespace wrb
