#include <cgi_GetParameter.h>
#include <cgi_PutStream.h>
#include <cmdhl.h>

#include <string_view>
#include <type_traits>

// The types for binding at run time must not drift from the functions.
static_assert(std::is_same_v<cmdhl_InitializeFn, decltype(&cmdhl_Initialize)>);
static_assert(std::is_same_v<cmdhl_ProcessFn, decltype(&cmdhl_Process)>);
static_assert(std::is_same_v<cmdhl_FinalizeFn, decltype(&cmdhl_Finalize)>);
static_assert(std::is_same_v<cmdhl_ReloadDebugSettingFn, decltype(&cmdhl_ReloadDebugSetting)>);

// Every operation of the gateway classes links; there is no request, so there is nothing to be had.
bool GatewayClassesAnswer() {
    CGetParameter request(false, false);
    CGetParameter again;
    const wchar_t* name = nullptr;
    const wchar_t* value = nullptr;
    wchar_t text[300];
    bool good = request.GetInitializationResult() == kCgiBadMethod && request.AddParameter(L"A", L"7") == 0 &&
                again.Get(L"a", 0) == 7 && *again.Get(L"b") == 0 && *again.GetValueByName(L"b", L"c") == L'c' &&
                *again.GetUploadFile(L"a") == 0 && again.EnumPara(name, value, true) && *again.Dump() == '<' &&
                !again.DeleteUnwantedUploadFile(L"a") && cgi_GetHomeDir(text, 300) &&
                cgi_UnEscapeUrl("%41", text, 300) == 1;
    again.ResetEnumPara();
    again.DeleteUploadFiles();
    again.Reset();
    CPutStream out(true);
    out << "gateway " << 1 << L" wide" << flush << endl;
    out.Send(text, true);
    out.Send(reinterpret_cast<const unsigned char*>("\n"), 1);
    return good;
}

int main() {
    cmdhl_Initialize(L"", L"", nullptr);
    const std::wstring_view message = L"CMDHL_CLEAR_INI_CACHE";
    const unsigned ran = cmdhl_Process(message.data(), message.size() * sizeof(wchar_t));
    cmdhl_Finalize();
    return ran == 1 && GatewayClassesAnswer() ? 0 : 1;
}
