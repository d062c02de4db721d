// Names of a package's entries: what is accepted stays below the target folder.
#include "EntryName.h"
#include "Fuzz.h"
#include "Text.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    for (const bool utf8 : {false, true}) {
        const auto name = wrb::CheckEntryName(BytesInput(data, size), utf8);
        if (!name) {
            continue;
        }
        const std::wstring path = L"\\" + name->wide + L"\\";
        REQUIRE(path.find_first_of(L"/:*?\"<>|") == path.npos && path.find(L"\\\\") == path.npos);
        REQUIRE(path.find(L"\\..\\") == path.npos && path.find(L"\\.\\") == path.npos);
        REQUIRE(wrb::AnsiToWide(name->narrow) == name->wide);
    }
    return 0;
}
