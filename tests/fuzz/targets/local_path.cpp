// Paths of packages and folders: what is accepted reaches a file system by its drive letter.
#include "LocalPath.h"

#include "Fuzz.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::wstring path = WideInput(data, size);
    if (wrb::IsDrivePath(path)) {
        REQUIRE(path.size() >= 3 && path[1] == L':' && (path[2] == L'\\' || path[2] == L'/'));
        REQUIRE(path.find_first_of(L":*?\"<>|\0", 2, 8) == path.npos);
        REQUIRE(wrb::LiesBelow(path.substr(0, 2) + L"\\" + path.substr(3) + L"x", path.substr(0, 2)));
        REQUIRE(!wrb::LiesBelow(path, path));
    }
    return 0;
}
