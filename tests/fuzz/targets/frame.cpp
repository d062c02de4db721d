// The frame before every request to the database server, against a reading of its two words.
#include "DbApiHeader.h"
#include "Fuzz.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    std::span<const uint8_t> request(data, size);
    CDbApiHeaderContent content;
    const auto status = wrb::ReadDbApiHeader(request, content);
    uint32_t words[2] = {};
    std::memcpy(words, data, size < sizeof words ? 0 : sizeof words);
    if (status == wrb::DbApiHeaderStatus::Ok) {
        REQUIRE(words[0] == kDbApiMagic && words[1] <= kDbApiHeaderLimit);
        REQUIRE(request.size() == size - kDbApiHeaderOffset - words[1] &&
                request.data() + request.size() == data + size);
        REQUIRE((content.modulePath.size() + content.caller.size()) * sizeof(wchar_t) <= words[1]);
    } else {
        REQUIRE(request.data() == data && request.size() == size);
        REQUIRE((status == wrb::DbApiHeaderStatus::BadMagic) == (size >= sizeof words && words[0] != kDbApiMagic));
    }
    return 0;
}
