#include "DbScanUpdate.h"

#include <array>
#include <optional>

#include "DbRequest.h"
#include "DebugLog.h"

namespace wrb {
namespace {

// One agent's uid, or nothing for every agent.
using Target = std::optional<const wchar_t*>;

struct WriteCommands {
    DbCommand one;
    DbCommand all;
};

// By ScanGroupIndex.
constexpr std::array<WriteCommands, kScanGroupCount> kGroupCommands = {{
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
constexpr std::array<WriteCommands, 4> kFlagCommands = {{
    {DbCommand::SetMsFlg, DbCommand::SetAllMsFlg},
    {DbCommand::SetRtFlg, DbCommand::SetAllRtFlg},
    {DbCommand::SetPsFlg, DbCommand::SetAllPsFlg},
    {DbCommand::SetSnFlg, DbCommand::SetAllSnFlg},
}};

CCmdProtocol StartWrite(const WriteCommands& commands, const Target& target) {
    CCmdProtocol request = MakeDbRequest(DbName(target ? commands.one : commands.all), kDbNoReplyId);
    if (target) {
        request << *target;
    }
    return request;
}

// An exclusion group's list is stored under its configuration bit; the others carry value, mask and numbers. The words
// are bits, so they go out unsigned; the numbers are settings and have a sign.
void AppendNumbers(CCmdProtocol& request, const ScanGroup& group, const ScanUpdate& update,
                   const ScanGroupValues& values) {
    if (group.kind == ScanGroupKind::Exclusion) {
        request << group.configFlag;
        return;
    }
    request << update.value << update.mask;
    for (const ScanNumber member : group.numbers.subspan(1)) {
        request << static_cast<int32_t>(values.*member);
    }
}

bool IsStored(const ScanGroup& group, ScanText member) {
    const bool realTimeSpyware = group.kind == ScanGroupKind::Spyware && group.type == ScanType::RT;
    return member != &ScanGroupValues::cleanFailedMoveDir && !realTimeSpyware;
}

bool WriteGroup(const ScanGroup& group, const Target& target, const ScanUpdate& update,
                const ScanGroupValues& values) noexcept {
    return GuardCall(L"SetDbScanGroup", [&] {
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
    return GuardCall(L"SetDbScanFlags", [&] {
        CCmdProtocol request = StartWrite(kFlagCommands[static_cast<std::size_t>(type)], target);
        request << value << mask;
        return Send(request, L"") == 1;
    });
}

// The exclusion group with that bit; null when there is none.
const ScanGroup* FindExclusions(const wchar_t* caller, uint32_t configBit) noexcept {
    for (const ScanGroup& group : kScanGroups) {
        if (group.kind == ScanGroupKind::Exclusion && group.configFlag == configBit) {
            return &group;
        }
    }
    WRB_LOG(kLogError, L"%s - no exclusion group has the bit 0x%x", caller, configBit);
    return nullptr;
}

}  // namespace

bool SetDbScanGroup(const ScanGroup& group, const wchar_t* uid, const ScanUpdate& update,
                    const ScanGroupValues& values) noexcept {
    return WriteGroup(group, uid, update, values);
}

bool SetAllDbScanGroup(const ScanGroup& group, const ScanUpdate& update, const ScanGroupValues& values) noexcept {
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

// The named functions: one row a group's kind and scan type, one a scan type's flag word.
#define WRB_SCAN_GROUP(name, nameAll, type, kind)                                                               \
    bool name(const wchar_t* uid, const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept { \
        return wrb::SetDbScanGroup(FindScanGroup(ScanType::type, ScanGroupKind::kind), uid, update, values);    \
    }                                                                                                           \
    bool nameAll(const wrb::ScanUpdate& update, const wrb::ScanGroupValues& values) noexcept {                  \
        return wrb::SetAllDbScanGroup(FindScanGroup(ScanType::type, ScanGroupKind::kind), update, values);      \
    }

WRB_SCAN_GROUP(dbSetMscfW, dbSetAllMscfW, MS, Main)
WRB_SCAN_GROUP(dbSetRtcfW, dbSetAllRtcfW, RT, Main)
WRB_SCAN_GROUP(dbSetPscfW, dbSetAllPscfW, PS, Main)
WRB_SCAN_GROUP(dbSetSncfW, dbSetAllSncfW, SN, Main)
WRB_SCAN_GROUP(dbSetSpywareMscfW, dbSetSpywareAllMscfW, MS, Spyware)
WRB_SCAN_GROUP(dbSetSpywareRtcfW, dbSetSpywareAllRtcfW, RT, Spyware)
WRB_SCAN_GROUP(dbSetSpywarePscfW, dbSetSpywareAllPscfW, PS, Spyware)
WRB_SCAN_GROUP(dbSetSpywareSncfW, dbSetSpywareAllSncfW, SN, Spyware)

#undef WRB_SCAN_GROUP

#define WRB_SCAN_FLAGS(name, nameAll, type)                                 \
    bool name(const wchar_t* uid, uint32_t value, uint32_t mask) noexcept { \
        return wrb::SetDbScanFlags(ScanType::type, uid, value, mask);       \
    }                                                                       \
    bool nameAll(uint32_t value, uint32_t mask) noexcept {                  \
        return wrb::SetAllDbScanFlags(ScanType::type, value, mask);         \
    }

WRB_SCAN_FLAGS(dbSetMsFlgW, dbSetAllMsFlgW, MS)
WRB_SCAN_FLAGS(dbSetRtFlgW, dbSetAllRtFlgW, RT)
WRB_SCAN_FLAGS(dbSetPsFlgW, dbSetAllPsFlgW, PS)
WRB_SCAN_FLAGS(dbSetSnFlgW, dbSetAllSnFlgW, SN)

#undef WRB_SCAN_FLAGS

bool dbSetExcludeListW(const wchar_t* uid, uint32_t configBit, const wrb::ScanGroupValues& values) noexcept {
    const wrb::ScanGroup* const group = wrb::FindExclusions(L"dbSetExcludeListW", configBit);
    return group != nullptr && wrb::SetDbScanGroup(*group, uid, {}, values);
}

bool dbSetAllExcListW(uint32_t configBit, const wrb::ScanGroupValues& values) noexcept {
    const wrb::ScanGroup* const group = wrb::FindExclusions(L"dbSetAllExcListW", configBit);
    return group != nullptr && wrb::SetAllDbScanGroup(*group, {}, values);
}
