#include "DbScanUpdate.h"

#include <array>
#include <optional>

#include "DbRequest.h"

namespace wrb {
namespace {

// One agent's uid, or nothing for every agent.
using Target = std::optional<const wchar_t*>;

struct tagWriteCommands {
    DbCommand one;
    DbCommand all;
};

// By ScanGroupIndex.
constexpr std::array<tagWriteCommands, kScanGroupCount> kGroupCommands = {{
    {DbCommand::SetMscf, DbCommand::SetAllMscf},
    {DbCommand::SetSpywareMscf, DbCommand::SetSpywareAllMscf},
    {DbCommand::SetExcludeList, DbCommand::SetAllExcList},
    {DbCommand::SetRtcf, DbCommand::SetAllRtcf},
    {DbCommand::SetSpywareRtcf, DbCommand::SetSpywareAllRtcf},
    {DbCommand::SetExcludeList, DbCommand::SetAllExcList},
    {DbCommand::SetPscf, DbCommand::SetAllPscf},
    {DbCommand::SetSpywarePscf, DbCommand::SetSpywareAllPscf},
    {DbCommand::SetExcludeList, DbCommand::SetAllExcList},
    {DbCommand::SetSncf, DbCommand::SetAllSncf},
    {DbCommand::SetSpywareSncf, DbCommand::SetSpywareAllSncf},
    {DbCommand::SetExcludeList, DbCommand::SetAllExcList},
}};

// By ScanType.
constexpr std::array<tagWriteCommands, 4> kFlagCommands = {{
    {DbCommand::SetMsFlg, DbCommand::SetAllMsFlg},
    {DbCommand::SetRtFlg, DbCommand::SetAllRtFlg},
    {DbCommand::SetPsFlg, DbCommand::SetAllPsFlg},
    {DbCommand::SetSnFlg, DbCommand::SetAllSnFlg},
}};

CCmdProtocol StartWrite(const tagWriteCommands& commands, const Target& target) {
    CCmdProtocol request = MakeDbRequest(DbName(target ? commands.one : commands.all), kDbNoReplyId);
    if (target) {
        request << *target;
    }
    return request;
}

// An exclusion group's list is stored under its configuration bit; the others carry value, mask and numbers.
void AppendNumbers(CCmdProtocol& request, const ScanGroup& group, const tagScanUpdate& update,
                   const tagScanGroupValues& values) {
    if (group.kind == ScanGroupKind::Exclusion) {
        request << group.configFlag;
        return;
    }
    request << update.value << update.mask;
    for (const ScanNumber member : group.numbers.subspan(1)) {
        request << values.*member;
    }
}

bool IsStored(const ScanGroup& group, ScanText member) {
    const bool realTimeSpyware = group.kind == ScanGroupKind::Spyware && group.type == ScanType::RT;
    return member != &tagScanGroupValues::cleanFailedMoveDir && !realTimeSpyware;
}

bool WriteGroup(const ScanGroup& group, const Target& target, const tagScanUpdate& update,
                const tagScanGroupValues& values) noexcept {
    return GuardDbCall(L"SetDbScanGroup", [&] {
        CCmdProtocol request = StartWrite(kGroupCommands[ScanGroupIndex(group.type, group.kind)], target);
        AppendNumbers(request, group, update, values);
        for (const ScanText member : group.texts) {
            if (IsStored(group, member)) {
                request << values.*member;
            }
        }
        if (group.kind != ScanGroupKind::Exclusion) {
            request << update.flag;
        }
        return Send(request, L"") == 1;
    });
}

bool WriteFlags(ScanType type, const Target& target, uint32_t value, uint32_t mask) noexcept {
    return GuardDbCall(L"SetDbScanFlags", [&] {
        CCmdProtocol request = StartWrite(kFlagCommands[static_cast<std::size_t>(type)], target);
        request << value << mask;
        return Send(request, L"") == 1;
    });
}

// The exclusion group with that bit; null when there is none.
const ScanGroup* FindExclusions(uint32_t configBit) noexcept {
    for (const ScanGroup& group : kScanGroups) {
        if (group.kind == ScanGroupKind::Exclusion && group.configFlag == configBit) {
            return &group;
        }
    }
    WRB_LOG(kLogError, L"%s - no exclusion group has the bit 0x%x", L"dbSetExcludeListW", configBit);
    return nullptr;
}

}  // namespace

bool SetDbScanGroup(const ScanGroup& group, const wchar_t* uid, const tagScanUpdate& update,
                    const tagScanGroupValues& values) noexcept {
    return WriteGroup(group, uid, update, values);
}

bool SetAllDbScanGroup(const ScanGroup& group, const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return WriteGroup(group, std::nullopt, update, values);
}

bool SetDbScanFlags(ScanType type, const wchar_t* uid, uint32_t value, uint32_t mask) noexcept {
    return WriteFlags(type, uid, value, mask);
}

bool SetAllDbScanFlags(ScanType type, uint32_t value, uint32_t mask) noexcept {
    return WriteFlags(type, std::nullopt, value, mask);
}

}  // namespace wrb

using wrb::FindScanGroup;
using wrb::ScanGroupKind;
using wrb::ScanType;
using wrb::SetAllDbScanFlags;
using wrb::SetAllDbScanGroup;
using wrb::SetDbScanFlags;
using wrb::SetDbScanGroup;

bool dbSetMscfW(const wchar_t* uid, const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetDbScanGroup(FindScanGroup(ScanType::MS, ScanGroupKind::Main), uid, update, values);
}

bool dbSetRtcfW(const wchar_t* uid, const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetDbScanGroup(FindScanGroup(ScanType::RT, ScanGroupKind::Main), uid, update, values);
}

bool dbSetPscfW(const wchar_t* uid, const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetDbScanGroup(FindScanGroup(ScanType::PS, ScanGroupKind::Main), uid, update, values);
}

bool dbSetSncfW(const wchar_t* uid, const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetDbScanGroup(FindScanGroup(ScanType::SN, ScanGroupKind::Main), uid, update, values);
}

bool dbSetAllMscfW(const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetAllDbScanGroup(FindScanGroup(ScanType::MS, ScanGroupKind::Main), update, values);
}

bool dbSetAllRtcfW(const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetAllDbScanGroup(FindScanGroup(ScanType::RT, ScanGroupKind::Main), update, values);
}

bool dbSetAllPscfW(const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetAllDbScanGroup(FindScanGroup(ScanType::PS, ScanGroupKind::Main), update, values);
}

bool dbSetAllSncfW(const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetAllDbScanGroup(FindScanGroup(ScanType::SN, ScanGroupKind::Main), update, values);
}

bool dbSetSpywareMscfW(const wchar_t* uid, const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetDbScanGroup(FindScanGroup(ScanType::MS, ScanGroupKind::Spyware), uid, update, values);
}

bool dbSetSpywareRtcfW(const wchar_t* uid, const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetDbScanGroup(FindScanGroup(ScanType::RT, ScanGroupKind::Spyware), uid, update, values);
}

bool dbSetSpywarePscfW(const wchar_t* uid, const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetDbScanGroup(FindScanGroup(ScanType::PS, ScanGroupKind::Spyware), uid, update, values);
}

bool dbSetSpywareSncfW(const wchar_t* uid, const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetDbScanGroup(FindScanGroup(ScanType::SN, ScanGroupKind::Spyware), uid, update, values);
}

bool dbSetSpywareAllMscfW(const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetAllDbScanGroup(FindScanGroup(ScanType::MS, ScanGroupKind::Spyware), update, values);
}

bool dbSetSpywareAllRtcfW(const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetAllDbScanGroup(FindScanGroup(ScanType::RT, ScanGroupKind::Spyware), update, values);
}

bool dbSetSpywareAllPscfW(const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetAllDbScanGroup(FindScanGroup(ScanType::PS, ScanGroupKind::Spyware), update, values);
}

bool dbSetSpywareAllSncfW(const tagScanUpdate& update, const tagScanGroupValues& values) noexcept {
    return SetAllDbScanGroup(FindScanGroup(ScanType::SN, ScanGroupKind::Spyware), update, values);
}

bool dbSetExcludeListW(const wchar_t* uid, uint32_t configBit, const tagScanGroupValues& values) noexcept {
    const wrb::ScanGroup* group = wrb::FindExclusions(configBit);
    return group != nullptr && SetDbScanGroup(*group, uid, {}, values);
}

bool dbSetAllExcListW(uint32_t configBit, const tagScanGroupValues& values) noexcept {
    const wrb::ScanGroup* group = wrb::FindExclusions(configBit);
    return group != nullptr && SetAllDbScanGroup(*group, {}, values);
}

bool dbSetMsFlgW(const wchar_t* uid, uint32_t value, uint32_t mask) noexcept {
    return SetDbScanFlags(ScanType::MS, uid, value, mask);
}

bool dbSetRtFlgW(const wchar_t* uid, uint32_t value, uint32_t mask) noexcept {
    return SetDbScanFlags(ScanType::RT, uid, value, mask);
}

bool dbSetPsFlgW(const wchar_t* uid, uint32_t value, uint32_t mask) noexcept {
    return SetDbScanFlags(ScanType::PS, uid, value, mask);
}

bool dbSetSnFlgW(const wchar_t* uid, uint32_t value, uint32_t mask) noexcept {
    return SetDbScanFlags(ScanType::SN, uid, value, mask);
}

bool dbSetAllMsFlgW(uint32_t value, uint32_t mask) noexcept {
    return SetAllDbScanFlags(ScanType::MS, value, mask);
}

bool dbSetAllRtFlgW(uint32_t value, uint32_t mask) noexcept {
    return SetAllDbScanFlags(ScanType::RT, value, mask);
}

bool dbSetAllPsFlgW(uint32_t value, uint32_t mask) noexcept {
    return SetAllDbScanFlags(ScanType::PS, value, mask);
}

bool dbSetAllSnFlgW(uint32_t value, uint32_t mask) noexcept {
    return SetAllDbScanFlags(ScanType::SN, value, mask);
}
