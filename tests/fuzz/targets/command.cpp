// Command messages: the fields against a plain split at TABs, the message built from them again, and the dispatch
// against a comparison of the name. Only commands that echo are in the map.
#include <algorithm>
#include <vector>

#include "CmdProtocol.h"
#include "CommandFields.h"
#include "CommandMap.h"
#include "Fuzz.h"

namespace {

unsigned g_runs = 0;

constexpr wrb::CommandRow kRows[] = {
    {L"CMDHL_ECHO", wrb::CommandSlot::CMDHL_ECHO, wrb::Written{[](CCmdProtocol&) { ++g_runs; }}},
};

std::vector<std::wstring> SplitAtTabs(const std::wstring& text) {
    std::vector<std::wstring> fields(1);
    for (const wchar_t character : text) {
        if (character == L'\t') {
            fields.emplace_back();
        } else {
            fields.back() += character;
        }
    }
    return fields;
}

}  // namespace

void wrb::RunHandler(CommandSlot, const CommandHandler& handler, CCmdProtocol& message) {
    std::get<Written>(handler).function(message);
}

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::wstring text = WideInput(data, size);
    const std::vector<std::wstring> fields = SplitAtTabs(text);
    CCmdProtocol reader(text.data(), static_cast<int64_t>(size));
    CCmdProtocol numbers = reader;
    CCmdProtocol writer;
    for (const std::wstring& expected : fields) {
        std::wstring field;
        reader >> field;
        REQUIRE(field == expected);
        writer << field;
        wrb::TakeUnsigned(numbers);
    }
    REQUIRE(reader.AtEnd() && numbers.AtEnd());
    REQUIRE(writer.Text() == text);

    static const wrb::CommandMap map = [] {
        wrb::CommandMap made;
        wrb::AddCommands(made, kRows);
        return made;
    }();
    const unsigned before = g_runs;
    const bool echo = size >= 15 && fields[0] == L"CMDHL_ECHO";
    REQUIRE(wrb::DispatchCommand(map, text.c_str(), size) == (echo ? 1 : 0) && g_runs - before == (echo ? 1 : 0));
    return 0;
}
