// The environment of a gateway program as an interface, so that tests make requests without a web server.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace wrb {

class IGateway {
  public:
    virtual ~IGateway() = default;

    // An environment variable as UTF-8 text; nothing when it is not set.
    virtual std::optional<std::string> Variable(const wchar_t* name) = 0;

    // Standard input, as bytes: waits until `size` of them are there or the input ends; returns how many came.
    virtual std::size_t ReadBody(char* buffer, std::size_t size) = 0;

    // The server's home folder and the gateway program's own, each with a backslash at its end, or empty.
    virtual std::wstring HomeFolder() = 0;
    virtual std::wstring ProgramFolder() = 0;
};

// The environment of this process; never destroyed before its end.
IGateway& SystemGateway();

}  // namespace wrb
