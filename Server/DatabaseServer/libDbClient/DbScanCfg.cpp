#include "DbScanCfg.h"

#include "DbAgent.h"
#include "Text.h"

using wrb::DbName;
using wrb::ScanGroupKind;
using wrb::ScanType;

bool wrb::GetDbScanGroup(const ScanGroup& group, const wchar_t* uid, wrb::ScanGroupValues& values,
                         uint32_t number) noexcept {
    return GuardCall(WRB_HERE, L"GetDbScanGroup", [&] {
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

bool dbGetExtraW(const wchar_t* uid, uint32_t configBit, std::wstring& text) noexcept {
    return wrb::ReadDbText(DbName(DbCommand::GetExtra), text, uid, configBit);
}

bool dbGetSpywareWhiteListW(const wchar_t* uid, std::vector<std::wstring>& items, uint32_t number) noexcept {
    return wrb::GuardCall(WRB_HERE, L"dbGetSpywareWhiteListW", [&] {
        const wchar_t* const name = DbName(DbCommand::GetSpywareWhiteList);
        std::wstring answer;
        CCmdProtocol fields;
        if (!wrb::AskDbText(name, answer, uid, number) ||
            (!wrb::OpenDbRecord(answer, name, fields) && !wrb::IsKnownAgent(uid))) {
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
