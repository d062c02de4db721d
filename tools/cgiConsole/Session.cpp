#include "Session.h"

#include <windows.h>

#include <stdexcept>

#include "Handle.h"
#include "KeyedHash.h"
#include "RequestOrigin.h"
#include "SystemText.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr wchar_t kCookie[] = L"wrb_session";
constexpr std::size_t kSessionBytes = 16;

[[noreturn]] void Fail(const char* what, const std::string& why) {
    throw std::runtime_error(std::string(what) + " failed: " + why);
}

FileHandle OpenKey(const std::wstring& path, DWORD access, DWORD disposition) {
    return FileHandle(
        CreateFileW(path.c_str(), access, FILE_SHARE_READ, nullptr, disposition, FILE_ATTRIBUTE_HIDDEN, nullptr));
}

bool ReadKey(const std::wstring& path, HashKey& key) {
    const FileHandle file = OpenKey(path, GENERIC_READ, OPEN_EXISTING);
    DWORD read = 0;
    return file && ReadFile(file.Get(), key.data(), static_cast<DWORD>(key.size()), &read, nullptr) &&
           read == key.size();
}

// Two processes may make the key at the same time: it is written under a name of its own and renamed, which only the
// first one can do. Both use what is there then.
HashKey LoadKey(const std::wstring& homeFolder) {
    const std::wstring path = homeFolder + L"Private\\console.key";
    HashKey key;
    if (ReadKey(path, key)) {
        return key;
    }
    const std::wstring fresh = path + L"." + std::to_wstring(GetCurrentProcessId());
    FillRandom(key);
    {
        const FileHandle file = OpenKey(fresh, GENERIC_WRITE, CREATE_ALWAYS);
        const DWORD error = GetLastError();
        DWORD written = 0;
        if (!file) {
            Fail("making Private\\console.key", SystemText(error));
        }
        if (!WriteFile(file.Get(), key.data(), static_cast<DWORD>(key.size()), &written, nullptr)) {
            Fail("writing Private\\console.key", SystemText(GetLastError()));
        }
    }
    if (!MoveFileExW(fresh.c_str(), path.c_str(), MOVEFILE_WRITE_THROUGH)) {
        DeleteFileW(fresh.c_str());
    }
    if (!ReadKey(path, key)) {
        Fail("reading Private\\console.key", SystemText(GetLastError()));
    }
    return key;
}

bool IsSessionId(const std::wstring& text) {
    return text.size() == 2 * kSessionBytes && text.find_first_not_of(L"0123456789abcdef") == text.npos;
}

// Takes the same time wherever the texts differ.
bool SameText(const std::string& left, const std::string& right) {
    unsigned char difference = left.size() == right.size() ? 0 : 1;
    for (std::size_t i = 0; i < std::min(left.size(), right.size()); ++i) {
        difference = static_cast<unsigned char>(difference | (left[i] ^ right[i]));
    }
    return difference == 0;
}

}  // namespace

Session::Session(const Request& request, const std::wstring& homeFolder) {
    std::string id = WideToUtf8(Request::Cookie(kCookie));
    m_isNew = !IsSessionId(Utf8ToWide(id));
    if (m_isNew) {
        std::array<uint8_t, kSessionBytes> random;
        FillRandom(random);
        id = HexDigits(random);
        const bool isTls = GatewayVariable(L"HTTPS") == L"on" || GatewayVariable(L"REQUEST_SCHEME") == L"https";
        m_header = "Set-Cookie: " + WideToUtf8(kCookie) + "=" + id + "; HttpOnly; SameSite=Strict; Path=/" +
                   (isTls ? "; Secure" : "");
    }
    m_token = HexDigits(KeyedHash(LoadKey(homeFolder), id + "\n" + WideToUtf8(request.User())));
}

bool Session::Admits(const Request& request) const {
    return !m_isNew && SameText(WideToUtf8(request.Text(L"token")), m_token);
}

}  // namespace wrb
