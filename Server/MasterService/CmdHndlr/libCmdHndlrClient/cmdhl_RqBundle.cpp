// Requests for setting bundles: one row a handler, over the frame that the answering commands share.
#include "DebugLog.h"
#include "HandlerFrame.h"
#include "SourceFile.h"
#include "cmdhl_Handlers.h"
#include "cmdhm_Bundles.h"

// The texts are known to those who search logs, so each request keeps its own shape.
#define WRB_NAME_COLON(name, what) L"" #name L": " what
#define WRB_NAME_TWICE(name, what) L"" #name L" - " #name L": " what
#define WRB_NAME_DASH(name, what) L"" #name L" - " what

#define WRB_BUNDLE_REQUEST(handler, command, logic, shape, failed, failedLevel)                              \
    void handler(CCmdProtocol& message) {                                                                    \
        wrb::AnswerCommand(                                                                                  \
            {wrb::CommandSlot::command, logic, shape(handler, L"uid:[%s]"), shape(handler, L"output:[%s]"),  \
             WRB_SOURCE_FILE, __LINE__, shape(handler, L"cmdhl_OutputCommand failed." failed), failedLevel}, \
            message);                                                                                        \
    }

// A reply that cannot be sent is an error, but for the web-threat request, which logs it as it logs everything else.
WRB_BUNDLE_REQUEST(cmdhl_GetWtpSetting, CMDHL_GET_WTP_SETTING, cmdhm_GetWtpSetting, WRB_NAME_COLON, L" ", kLogDebug8)
WRB_BUNDLE_REQUEST(cmdhl_GetFARestoreSetting, CMDHL_GET_FA_RESTORE_SETTING, cmdhm_GetFARestoreSetting, WRB_NAME_TWICE,
                   L"", kLogError)
WRB_BUNDLE_REQUEST(cmdhl_GetNCIESetting, CMDHL_GET_NCIE_SETTING, wrb::WithoutReset<cmdhm_GetNCIESetting>, WRB_NAME_DASH,
                   L"", kLogError)
WRB_BUNDLE_REQUEST(cmdhl_GetSampleSubmissionSetting, CMDHL_GET_SAMPLE_SUBMISSION_SETTING,
                   wrb::WithoutReset<cmdhm_GetSampleSubmissionSetting>, WRB_NAME_DASH, L"", kLogError)
WRB_BUNDLE_REQUEST(cmdhl_GetSablexSetting, CMDHL_GET_SABLEX_SETTING, wrb::WithoutReset<cmdhm_GetSablexSetting>,
                   WRB_NAME_DASH, L"", kLogError)
