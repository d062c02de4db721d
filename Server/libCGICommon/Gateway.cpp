#include "Gateway.h"

#include <fcntl.h>
#include <io.h>

#include <cstdio>

#include "Environment.h"
#include "HomeFolder.h"
#include "Text.h"

namespace wrb {
namespace {

class ProcessGateway final : public IGateway {
  public:
    std::optional<std::string> Variable(const wchar_t* name) override {
        const std::optional<std::wstring> value = ReadEnvironment(name);
        return value ? std::optional(WideToUtf8(*value)) : std::nullopt;
    }

    std::size_t ReadBody(char* buffer, std::size_t size) override {
        _setmode(_fileno(stdin), _O_BINARY);
        return std::fread(buffer, 1, size, stdin);
    }

    std::wstring HomeFolder() override { return wrb::HomeFolder(); }
    std::wstring ProgramFolder() override { return wrb::ProgramFolder(); }
};

}  // namespace

IGateway& SystemGateway() {
    static ProcessGateway gateway;
    return gateway;
}

}  // namespace wrb
