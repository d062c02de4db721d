#include "ExportScanCfg.h"

#include "DebugLog.h"
#include "RenderScanGroup.h"

namespace wrb {

void ExportScanGroup(std::wstring& out, const ScanGroup& group, std::wstring_view uid, const ScanGroupValues& values) {
    RenderScanGroup(out, group, uid, values);
    // Of the twelve only this one leaves a trace.
    if (group.type == ScanType::MS && group.kind == ScanGroupKind::Spyware) {
        WRB_LOG(kLogDebug8, L"[cmdhm_ExportSpyMSCfg][%s]", out.c_str());
    }
}

}  // namespace wrb
