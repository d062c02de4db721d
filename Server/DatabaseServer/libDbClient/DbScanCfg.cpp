#include "DbScanCfg.h"

#include "DbAgent.h"
#include "DbRequest.h"
#include "Text.h"

using wrb::DbName;
using wrb::FindScanGroup;
using wrb::GetDbScanGroup;
using wrb::ScanGroupKind;
using wrb::ScanType;

namespace {

bool IsKnownAgent(const wchar_t* uid) {
    std::wstring answer;
    return dbIsClientExistedW(uid == nullptr ? L"" : uid, answer) && wrb::ParseInt64(answer) == 1;
}

}  // namespace

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
        const wchar_t* const name = DbName(DbCommand::GetSpywareWhiteList);
        std::wstring answer;
        CCmdProtocol fields;
        if (!wrb::AskDbText(name, answer, uid, number) ||
            (!wrb::OpenDbRecord(answer, name, fields) && !IsKnownAgent(uid))) {
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
