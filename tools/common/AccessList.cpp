#include "AccessList.h"

#include <sddl.h>

namespace wrb {
namespace {

std::optional<std::wstring> SidText(PSID sid) {
    LocalMemory text;
    if (!ConvertSidToStringSidW(sid, reinterpret_cast<LPWSTR*>(text.Receive()))) {
        return std::nullopt;
    }
    return static_cast<const wchar_t*>(text.Get());
}

std::optional<std::wstring> SidOfThisProcess() {
    KernelHandle token;
    alignas(TOKEN_USER) BYTE user[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
    DWORD bytes = 0;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Receive()) ||
        !GetTokenInformation(token.Get(), TokenUser, user, sizeof user, &bytes)) {
        return std::nullopt;
    }
    return SidText(reinterpret_cast<const TOKEN_USER*>(user)->User.Sid);
}

}  // namespace

std::optional<std::wstring> AccountSid(const std::wstring& account) {
    if (account.empty()) {  // some functions of the system take it for an account
        SetLastError(ERROR_NONE_MAPPED);
        return std::nullopt;
    }
    LocalMemory given;
    if (ConvertStringSidToSidW(account.c_str(), given.Receive())) {
        return SidText(given.Get());
    }
    alignas(SID) BYTE sid[SECURITY_MAX_SID_SIZE];
    DWORD sidBytes = sizeof sid;
    wchar_t domain[256];
    DWORD domainCharacters = 256;
    SID_NAME_USE use{};
    if (!LookupAccountNameW(nullptr, account.c_str(), sid, &sidBytes, domain, &domainCharacters, &use)) {
        return std::nullopt;
    }
    return SidText(sid);
}

std::optional<std::wstring> AddAccountSids(const std::vector<std::wstring>& accounts, std::vector<std::wstring>& sids) {
    for (const std::wstring& account : accounts) {
        std::optional<std::wstring> sid = AccountSid(account);
        if (!sid) {
            return account;
        }
        sids.push_back(*std::move(sid));
    }
    return std::nullopt;
}

bool AccessList::Set(const std::vector<std::wstring>& sids, const wchar_t* rights) {
    const std::optional<std::wstring> own = SidOfThisProcess();
    if (!own) {
        return false;
    }
    std::wstring text = L"D:P(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;" + *own + L")";
    for (const std::wstring& sid : sids) {
        text += std::wstring(L"(A;;") + rights + L";;;" + sid + L")";
    }
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1, m_descriptor.Receive(),
                                                              nullptr)) {
        return false;
    }
    m_attributes.lpSecurityDescriptor = m_descriptor.Get();
    return true;
}

}  // namespace wrb
