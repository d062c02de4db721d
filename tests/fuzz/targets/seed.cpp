// The JSON file from which the database is filled. What is accepted can also be stored.
#include "Fuzz.h"
#include "SeedStore.h"
#include "Store.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static const auto db = wrb::CreateStore(L":memory:");
    try {
        const wrb::SeedData seed = wrb::ParseSeed(BytesInput(data, size));
        wrb::StoreSeed(*db, seed);
        REQUIRE(db->NumberOf("SELECT count(*) FROM agent") == static_cast<int64_t>(seed.agents.size()));
        db->Execute("DELETE FROM agent");
    } catch (const wrb::SeedError& error) {
        REQUIRE(*error.what() != '\0');
    }
    return 0;
}
