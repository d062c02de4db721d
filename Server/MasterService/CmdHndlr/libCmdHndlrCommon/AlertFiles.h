// Which alert type has its text in which file, and the keys under which a section shows it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace wrb {

struct AlertFile {
    int32_t type;
    const wchar_t* name;
    const wchar_t* textKey;
    const wchar_t* lengthKey;
};

// In the order in which the files are read. Agents know the keys "AlertWRS" (of "AlertWSR.MSG") and "LenFirewallf" in
// this spelling. Type 0 comes first: it is the type of every number that is not listed.
inline constexpr AlertFile kAlertFiles[] = {
    {0, L"ALERT.MSG", L"AlertAV", L"LenAV"},
    {1, L"ALERTCFW.MSG", L"AlertFirewall", L"LenFirewallf"},
    {3, L"AlertAS.MSG", L"AlertAS", L"LenAS"},
    {5, L"AlertWSR.MSG", L"AlertWRS", L"LenWRS"},
    {13, L"AlertCCCA.MSG", L"AlertCCCA", L"LenCCCA"},
    {7, L"AlertDAC.MSG", L"AlertDAC", L"LenDAC"},
    {8, L"AlertBM.MSG", L"AlertBM", L"LenBM"},
    {14, L"AlertQKA.MSG", L"AlertQuokka", L"LenQuokka"},
    {12, L"AlertDLP.MSG", L"AlertDLP", L"LenDLP"},
    {9, L"ALERTH.MSG", L"AlertAV_H", L"LenAV_H"},
    {10, L"ALERTM.MSG", L"AlertAV_M", L"LenAV_M"},
    {11, L"ALERTL.MSG", L"AlertAV_L", L"LenAV_L"},
    {15, L"AlertSABLEX.MSG", L"AlertSablx", L"LenSablx"},
};

// The order of a section, as positions in the list above: the first twelve, then the settings, then the last.
inline constexpr std::size_t kAlertsBeforeSettings[] = {0, 2, 1, 3, 4, 5, 6, 7, 9, 10, 11, 8};
inline constexpr std::size_t kAlertAfterSettings = 12;

constexpr const AlertFile& FindAlertFile(int32_t type) {
    for (const AlertFile& file : kAlertFiles) {
        if (file.type == type) {
            return file;
        }
    }
    return kAlertFiles[0];
}

}  // namespace wrb
