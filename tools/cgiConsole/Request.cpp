#include "Request.h"

#include <windows.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "RequestOrigin.h"
#include "Text.h"

namespace wrb {

Request::Request() : m_isPost(GatewayVariable(L"REQUEST_METHOD") == L"POST"), m_user(GatewayVariable(L"REMOTE_USER")) {}

Request::~Request() {
    m_parameters.DeleteUploadFiles();
}

void Request::DropUnreadBody() const {
    constexpr int64_t kPipeBytes = 64 * 1024;  // a shorter body fits into the pipe
    constexpr int64_t kMostBytes = 64 * 1024 * 1024;
    const int64_t length = ParseInt64(GatewayVariable(L"CONTENT_LENGTH"));
    const int status = Status();
    const bool isUnread = status == kCgiBadMethod || status == kCgiBadContentType || status == kCgiMultipartTooLong ||
                          (status == kCgiFetched && m_isPost && !Has(L"complete"));
    if (!isUnread || length <= kPipeBytes) {
        return;
    }
    std::vector<char> bytes(kPipeBytes);
    DWORD read = 1;
    for (int64_t left = std::min(length, kMostBytes); left > 0 && read != 0; left -= read) {
        if (!ReadFile(GetStdHandle(STD_INPUT_HANDLE), bytes.data(), static_cast<DWORD>(std::min(left, kPipeBytes)),
                      &read, nullptr)) {
            read = 0;
        }
    }
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
