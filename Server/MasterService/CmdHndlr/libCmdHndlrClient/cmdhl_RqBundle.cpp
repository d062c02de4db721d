// Requests for setting bundles: one row a handler, over the frame that the answering commands share.
#include "DebugLog.h"
#include "HandlerFrame.h"
#include "SourceFile.h"
#include "cmdhl_Handlers.h"
#include "cmdhm_Bundles.h"

namespace {

// These bundles have no "changed" bit.
template <bool (*getter)(std::wstring&, const wchar_t*)>
bool WithoutReset(std::wstring& output, const wchar_t* uid, bool /*bResetCfgFlag*/) {
    return getter(output, uid);
}

}  // namespace

// The three shapes of the log lines: "name: what", "name - name: what" and "name - what".
#define WRB_PLAIN(name, what) L"" #name L": " what
#define WRB_NAMED_TWICE(name, what) L"" #name L" - " #name L": " what
#define WRB_NAMED(name, what) L"" #name L" - " what

#define WRB_BUNDLE_REQUEST(handler, command, logic, shape, failed, failedLevel)                              \
    void handler(CCmdProtocol& message) {                                                                    \
        wrb::AnswerCommand(                                                                                  \
            {wrb::CommandSlot::command, logic, shape(handler, L"uid:[%s]"), shape(handler, L"output:[%s]"),  \
             WRB_SOURCE_FILE, __LINE__, shape(handler, L"cmdhl_OutputCommand failed." failed), failedLevel}, \
            message);                                                                                        \
    }

// A reply that cannot be sent is an error, but for the web-threat request, which logs it as it logs everything else.
WRB_BUNDLE_REQUEST(cmdhl_GetWtpSetting, CMDHL_GET_WTP_SETTING, cmdhm_GetWtpSetting, WRB_PLAIN, L" ", kLogDebug8)
WRB_BUNDLE_REQUEST(cmdhl_GetFARestoreSetting, CMDHL_GET_FA_RESTORE_SETTING, cmdhm_GetFARestoreSetting, WRB_NAMED_TWICE,
                   L"", kLogError)
WRB_BUNDLE_REQUEST(cmdhl_GetNCIESetting, CMDHL_GET_NCIE_SETTING, WithoutReset<cmdhm_GetNCIESetting>, WRB_NAMED, L"",
                   kLogError)
WRB_BUNDLE_REQUEST(cmdhl_GetSampleSubmissionSetting, CMDHL_GET_SAMPLE_SUBMISSION_SETTING,
                   WithoutReset<cmdhm_GetSampleSubmissionSetting>, WRB_NAMED, L"", kLogError)
WRB_BUNDLE_REQUEST(cmdhl_GetSablexSetting, CMDHL_GET_SABLEX_SETTING, WithoutReset<cmdhm_GetSablexSetting>, WRB_NAMED,
                   L"", kLogError)
