// A request as a test wants it, with a home folder of its own.
#pragma once

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Gateway.h"
#include "TempFolder.h"
#include "cgi_GetParameterImp.h"

namespace wrb::test {

class CFakeGateway final : public IGateway {
  public:
    CFakeGateway() { std::filesystem::create_directories(m_home / L"web\\console\\cgi"); }

    std::optional<std::string> Variable(const wchar_t* name) override {
        const auto found = variables.find(name);
        return found != variables.end() ? std::optional(found->second) : std::nullopt;
    }
    std::size_t ReadBody(char* buffer, std::size_t size) override { return body.copy(buffer, size); }
    std::wstring HomeFolder() override { return m_home.Path() + L"\\"; }
    std::wstring ProgramFolder() override { return m_home.Path() + L"\\web\\console\\cgi\\"; }

    // A POST that announces its length, unless that is given.
    void Post(const std::string& contentType, const std::string& bytes, std::optional<std::string> length = {}) {
        body = bytes;
        variables = {{L"REQUEST_METHOD", "POST"},
                     {L"CONTENT_TYPE", contentType},
                     {L"CONTENT_LENGTH", length.value_or(std::to_string(bytes.size()))}};
    }

    // What lies in the folder of uploads.
    std::vector<std::filesystem::path> Uploads() const {
        std::vector<std::filesystem::path> files;
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(m_home / L"Temp", none)) {
            files.push_back(entry.path());
        }
        return files;
    }

    std::filesystem::path Home() const { return m_home.Path(); }

    std::map<std::wstring, std::string> variables;
    std::string body;

  private:
    CTempFolder m_home;
};

// "name=value" of every parameter, with a bar behind each.
inline std::wstring Parameters(CGetParameterImp& request) {
    std::wstring all;
    const wchar_t* name = nullptr;
    const wchar_t* value = nullptr;
    for (request.ResetEnumPara(); request.EnumPara(name, value, false);) {
        all += std::wstring(name) + L"=" + value + L"|";
    }
    return all;
}

}  // namespace wrb::test
