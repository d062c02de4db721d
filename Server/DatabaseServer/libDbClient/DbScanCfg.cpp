#include "DbScanCfg.h"

#include "DbRequest.h"

using wrb::DbName;
using wrb::FindScanGroup;
using wrb::GetDbScanGroup;
using wrb::ScanGroupKind;
using wrb::ScanType;

bool wrb::GetDbScanGroup(const ScanGroup& group, const wchar_t* uid, wrb::ScanGroupValues& values,
                         uint32_t number) noexcept {
    return GuardCall(L"GetDbScanGroup", [&] {
        CCmdProtocol fields;
        if (!AskDbRecord(group.numbersCommand.data(), fields, uid, number)) {
            return false;
        }
        for (const ScanNumber member : group.numbers) {
            fields >> values.*member;
        }
        if (group.kind == ScanGroupKind::Spyware && group.type != ScanType::RT) {
            fields >> values.excludeFileExtList;
        }
        return true;
    });
}

bool dbGetMscfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number) noexcept {
    return GetDbScanGroup(FindScanGroup(ScanType::MS, ScanGroupKind::Main), uid, values, number);
}

bool dbGetRtcfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number) noexcept {
    return GetDbScanGroup(FindScanGroup(ScanType::RT, ScanGroupKind::Main), uid, values, number);
}

bool dbGetPscfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number) noexcept {
    return GetDbScanGroup(FindScanGroup(ScanType::PS, ScanGroupKind::Main), uid, values, number);
}

bool dbGetSncfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number) noexcept {
    return GetDbScanGroup(FindScanGroup(ScanType::SN, ScanGroupKind::Main), uid, values, number);
}

bool dbGetSpywareMscfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number) noexcept {
    return GetDbScanGroup(FindScanGroup(ScanType::MS, ScanGroupKind::Spyware), uid, values, number);
}

bool dbGetSpywareRtcfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number) noexcept {
    return GetDbScanGroup(FindScanGroup(ScanType::RT, ScanGroupKind::Spyware), uid, values, number);
}

bool dbGetSpywarePscfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number) noexcept {
    return GetDbScanGroup(FindScanGroup(ScanType::PS, ScanGroupKind::Spyware), uid, values, number);
}

bool dbGetSpywareSncfW(const wchar_t* uid, wrb::ScanGroupValues& values, uint32_t number) noexcept {
    return GetDbScanGroup(FindScanGroup(ScanType::SN, ScanGroupKind::Spyware), uid, values, number);
}

bool dbGetExtraW(const wchar_t* uid, uint32_t configBit, std::wstring& text) noexcept {
    return wrb::ReadDbText(DbName(DbCommand::GetExtra), text, uid, configBit);
}

bool dbGetBackupLogAllSessionsW(const wchar_t* uid, std::wstring& text, uint32_t number) noexcept {
    return wrb::ReadDbText(DbName(DbCommand::GetBackupLogAllSessions), text, uid, number);
}

bool dbGetSpywareWhiteListW(const wchar_t* uid, std::vector<std::wstring>& items, uint32_t number) noexcept {
    return wrb::GuardCall(L"dbGetSpywareWhiteListW", [&] {
        CCmdProtocol fields;
        if (!wrb::AskDbRecord(DbName(DbCommand::GetSpywareWhiteList), fields, uid, number)) {
            return false;
        }
        items.clear();
        std::wstring item;
        for (fields >> item; !item.empty(); fields >> item) {
            items.push_back(item);
        }
        return true;
    });
}
