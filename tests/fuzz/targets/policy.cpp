// The policy document of an agent: what is read renders as lines of a key each, whatever the values hold.
#include "Fuzz.h"
#include "PolicyDocument.h"
#include "XmlElement.h"

namespace {

std::size_t LinesOf(const std::wstring& text) {
    std::size_t lines = 0;
    for (std::size_t at = 0; at < text.size(); ++lines) {
        const std::size_t end = text.find(L'\n', at);
        REQUIRE(end != text.npos);
        const std::wstring line = text.substr(at, end - at);
        REQUIRE(line.starts_with(L'[') ? line.ends_with(L']') : line.find(L'=') != line.npos);
        at = end + 1;
    }
    return lines;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    wrb::PolicyDocument document;
    try {
        document = wrb::ReadPolicyDocument(WideInput(data, size));
    } catch (const wrb::XmlError&) {
        return 0;
    }
    std::wstring out;
    document.behaviour.ExportToIni(out);
    // Of the policies their section and its count; of the exceptions a line each, and two; of the engine ten.
    REQUIRE(LinesOf(out) == 2 + document.behaviour.m_exceptions.size() + 2 + 10);
    document.applications.ExportToIni(out);
    document.devices.ExportToIni(out);
    LinesOf(out);
    return 0;
}
