#include "Request.h"

#include <string_view>

#include "RequestOrigin.h"

namespace wrb {

Request::Request() : m_isPost(GatewayVariable(L"REQUEST_METHOD") == L"POST"), m_user(GatewayVariable(L"REMOTE_USER")) {}

Request::~Request() {
    m_parameters.DeleteUploadFiles();
}

std::wstring Request::Cookie(const std::wstring& name) {
    const std::wstring cookies = GatewayVariable(L"HTTP_COOKIE");
    for (std::wstring_view rest = cookies; !rest.empty();) {
        const std::size_t end = std::min(rest.size(), rest.find(L';'));
        std::wstring_view pair = rest.substr(0, end);
        pair.remove_prefix(std::min(pair.size(), pair.find_first_not_of(L' ')));
        if (pair.starts_with(name + L"=")) {
            return std::wstring(pair.substr(name.size() + 1));
        }
        rest.remove_prefix(std::min(rest.size(), end + 1));
    }
    return {};
}

}  // namespace wrb
