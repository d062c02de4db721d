#include "DbScanUpdate.h"

#include <array>

#include "DbRequest.h"

namespace wrb {
namespace {

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

CCmdProtocol StartWrite(const WriteCommands& commands, DbTarget target) {
    CCmdProtocol request = MakeDbRequest(DbName(target ? commands.one : commands.all), kDbNoReplyId);
    if (target) {
        request << *target;
    }
    return request;
}

// An exclusion group's list is stored under its configuration bit; the others carry value, mask and numbers.
void AppendNumbers(CCmdProtocol& request, const ScanGroup& group, const ScanWrite& update,
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

}  // namespace

bool SetDbScanGroup(const ScanGroup& group, DbTarget target, const ScanWrite& update,
                    const ScanGroupValues& values) noexcept {
    return GuardCall(WRB_HERE, L"SetDbScanGroup", [&] {
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

bool SetDbScanFlags(ScanType type, DbTarget target, uint32_t value, uint32_t mask) noexcept {
    return GuardCall(WRB_HERE, L"SetDbScanFlags", [&] {
        CCmdProtocol request = StartWrite(kFlagCommands[static_cast<std::size_t>(type)], target);
        request << value << mask;
        return Send(request, L"") == 1;
    });
}

}  // namespace wrb
