// Requests for scan configurations: one row a handler, over the frame that all of them share.
#include "cmdhm_ScanCfg.h"

#include "HandlerFrame.h"
#include "SourceFile.h"
#include "cmdhl_Handlers.h"

// The two shapes of the log lines: "name: uid:[...]" and "[name] uid:[...]".
#define WRB_PLAIN(name, what) L"" #name L": " #what L":[%s]"
#define WRB_BRACKETED(name, what) L"[" #name L"] " #what L":[%s]"

// A reply that cannot be sent is logged by cmdhl_OutputCommand, and these handlers add nothing to it.
#define WRB_SCAN_REQUEST(handler, command, logic, shape)                                                   \
    void handler(CCmdProtocol& message) {                                                                  \
        wrb::AnswerCommand({wrb::CommandSlot::command, logic, shape(handler, uid), shape(handler, output), \
                            WRB_SOURCE_FILE, __LINE__},                                                    \
                           message);                                                                       \
    }

// clang-format off: one line a row.
WRB_SCAN_REQUEST(cmdhl_GetAllScanCfg, CMDHL_GET_ALL_SCAN_CFG, cmdhm_GetAllScanCfg, WRB_PLAIN)
WRB_SCAN_REQUEST(cmdhl_GetMSCfg, CMDHL_GET_MS_CFG, cmdhm_GetAndExportMSCfg, WRB_PLAIN)
WRB_SCAN_REQUEST(cmdhl_GetMSCfgEx, CMDHL_GET_MS_CFG_EX, cmdhm_GetAndExportMSCfgEx, WRB_PLAIN)
WRB_SCAN_REQUEST(cmdhl_GetSpyMSCfg, CMDHL_GET_SPY_MS_CFG, cmdhm_GetAndExportSpyMSCfg, WRB_BRACKETED)
WRB_SCAN_REQUEST(cmdhl_GetRTCfg, CMDHL_GET_RT_CFG, cmdhm_GetAndExportRTCfg, WRB_PLAIN)
WRB_SCAN_REQUEST(cmdhl_GetRTCfgEx, CMDHL_GET_RT_CFG_EX, cmdhm_GetAndExportRTCfgEx, WRB_PLAIN)
WRB_SCAN_REQUEST(cmdhl_GetSpyRTCfg, CMDHL_GET_SPY_RT_CFG, cmdhm_GetAndExportSpyRTCfg, WRB_BRACKETED)
WRB_SCAN_REQUEST(cmdhl_GetPSCfg, CMDHL_GET_PS_CFG, cmdhm_GetAndExportPSCfg, WRB_PLAIN)
WRB_SCAN_REQUEST(cmdhl_GetPSCfgEx, CMDHL_GET_PS_CFG_EX, cmdhm_GetAndExportPSCfgEx, WRB_PLAIN)
WRB_SCAN_REQUEST(cmdhl_GetSpyPSCfg, CMDHL_GET_SPY_PS_CFG, cmdhm_GetAndExportSpyPSCfg, WRB_BRACKETED)
WRB_SCAN_REQUEST(cmdhl_GetSNCfg, CMDHL_GET_SN_CFG, cmdhm_GetAndExportSNCfg, WRB_PLAIN)
WRB_SCAN_REQUEST(cmdhl_GetSNCfgEx, CMDHL_GET_SN_CFG_EX, cmdhm_GetAndExportSNCfgEx, WRB_PLAIN)
WRB_SCAN_REQUEST(cmdhl_GetSpySNCfg, CMDHL_GET_SPY_SN_CFG, cmdhm_GetAndExportSpySNCfg, WRB_BRACKETED)
WRB_SCAN_REQUEST(cmdhl_GetSpyRestoreList, CMDHL_GET_SPY_RESTORE_LIST, wrb::WithoutReset<cmdhm_GetSpyRestoreList>,
                 WRB_BRACKETED)
