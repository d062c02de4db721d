#include "RequestOrigin.h"

#include "Environment.h"

namespace wrb {

std::wstring GatewayVariable(const wchar_t* name) {
    return ReadEnvironment(name).value_or(L"");
}

bool IsPartOfAnotherSite() {
    return GatewayVariable(L"HTTP_SEC_FETCH_SITE") == L"cross-site" &&
           GatewayVariable(L"HTTP_SEC_FETCH_DEST") != L"document";
}

bool ComesFromThisSite() {
    const std::wstring site = GatewayVariable(L"HTTP_SEC_FETCH_SITE");
    if (!site.empty()) {
        return site == L"same-origin" || site == L"none";
    }
    const std::wstring origin = GatewayVariable(L"HTTP_ORIGIN");
    const std::wstring host = GatewayVariable(L"HTTP_HOST");
    return origin.empty() || origin == L"https://" + host || origin == L"http://" + host;
}

}  // namespace wrb
