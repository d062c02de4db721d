#include "Gateway.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>

#include "Text.h"
#include "cgi_HomeDir.h"

namespace wrb {
namespace {

class CSystemGateway final : public IGateway {
  public:
    std::optional<std::string> Variable(const wchar_t* name) override {
        std::wstring value;
        for (;;) {
            // A variable of no character is told from a missing one by the last error alone.
            SetLastError(ERROR_SUCCESS);
            const DWORD length = GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
            if (length == 0 && GetLastError() == ERROR_ENVVAR_NOT_FOUND) {
                return std::nullopt;
            }
            const bool whole = length < value.size() || length == 0;
            value.resize(length);
            if (whole) {
                return WideToUtf8(value);
            }
        }
    }

    std::size_t ReadBody(char* buffer, std::size_t size) override {
        _setmode(_fileno(stdin), _O_BINARY);
        return std::fread(buffer, 1, size, stdin);
    }

    std::wstring HomeFolder() override { return cgi_GetHomeDir(); }
    std::wstring ProgramFolder() override { return wrb::ProgramFolder(); }
};

}  // namespace

IGateway& SystemGateway() {
    static CSystemGateway gateway;
    return gateway;
}

}  // namespace wrb
