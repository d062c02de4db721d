#include "AgentSettings.h"

#include "BmPolicyCache.h"
#include "cmdhm_Vexor.h"

bool wrb::GetVexorSetting(std::wstring& output, const wchar_t* uid) {
    const BmPolicyCache* const cache = g_pBmPolicyCache;
    return cmdhm_GetVexorSetting(output, uid, cache != nullptr ? cache->Policies() : std::vector<tagVEXORPolicyItem>());
}
