// Web requests: the method on the first line, the content type on the second, then the query or the body. Percent
// decoding against a plain loop.
#include "Gateway.h"
#include "Fuzz.h"
#include "QueryTokens.h"
#include "Text.h"
#include "cgi_GetParameterImp.h"

namespace {

class InputGateway final : public wrb::IGateway {
  public:
    explicit InputGateway(std::string input) : m_rest(std::move(input)), m_method(TakeLine()), m_type(TakeLine()) {}

    const std::string& Rest() const { return m_rest; }

    std::optional<std::string> Variable(const wchar_t* name) override {
        const std::wstring_view wanted(name);
        return wanted == L"REQUEST_METHOD"   ? m_method
               : wanted == L"CONTENT_TYPE"   ? m_type
               : wanted == L"CONTENT_LENGTH" ? std::to_string(m_rest.size())
                                             : m_rest;
    }
    std::size_t ReadBody(char* buffer, std::size_t size) override { return m_rest.copy(buffer, size); }
    std::wstring HomeFolder() override { return {}; }
    std::wstring ProgramFolder() override { return {}; }

  private:
    std::string TakeLine() {
        const std::string line = m_rest.substr(0, m_rest.find('\n'));
        m_rest.erase(0, line.size() + 1);
        return line;
    }

    std::string m_rest;
    std::string m_method;
    std::string m_type;
};

// Without escapes of 16 bits, which the caller leaves out.
std::wstring Decoded(const std::string& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string digits = text[i] == '%' ? text.substr(i + 1, 2) : "";
        const bool hex = digits.size() == 2 && digits.find_first_not_of("0123456789abcdefABCDEF") == digits.npos;
        const int number = hex ? std::stoi(digits, nullptr, 16) : 0;
        bytes += number != 0 ? static_cast<char>(number) : text[i];
        i += number != 0 ? 2 : 0;
    }
    return wrb::Utf8ToWide(bytes);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    InputGateway gateway(BytesInput(data, size));
    CGetParameterImp parameters(true, false, gateway);
    const wchar_t* name = nullptr;
    const wchar_t* value = nullptr;
    while (parameters.EnumPara(name, value, false)) {
        REQUIRE(parameters.Find(name) != nullptr);
        parameters.FindUpload(name);
    }
    REQUIRE(std::strstr(parameters.Dump(), "<script") == nullptr);
    const std::string text(gateway.Rest().c_str());
    REQUIRE(text.find("%u") != text.npos || text.find("%U") != text.npos || wrb::PercentDecode(text) == Decoded(text));
    return 0;
}
