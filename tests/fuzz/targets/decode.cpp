// Messages shown field by field: the fields lie in the message, one after the other, whatever the bytes are.
#include "Decode.h"

#include "Fuzz.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const wrb::Decoded decoded = wrb::Decode({data, size});
    std::size_t end = 0;
    for (const wrb::DecodedField& field : decoded.fields) {
        REQUIRE(field.offset >= end && field.bytes <= size && field.offset <= size - field.bytes);
        end = field.offset + field.bytes;
    }
    REQUIRE(!decoded.kind.empty() && (end != 0 || !decoded.problem.empty() || size <= 2));
    return 0;
}
