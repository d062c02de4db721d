// Text commands of the database server, over a store in memory. No text may make SQLite fail.
#include "DbCommands.h"
#include "Fuzz.h"
#include "ReceivedMessage.h"
#include "SeedStore.h"
#include "Store.h"
#include "TextCommands.h"

namespace {

constexpr char kSeed[] = R"({"agents": [
    {"uid": "11111111-2222-3333-4444-555555555555", "scan": {}, "approvedSpyware": ["a"], "restoreSessions": ["b"]},
    {"uid": "21111111-2222-3333-4444-555555555555"}]})";

wrb::SqlDb& Store() {
    static const auto db = wrb::CreateStore(L":memory:");
    return *db;
}

// Each input finds the same rows.
void Fill() {
    static const wrb::SeedData seed = wrb::ParseSeed(kSeed);
    Store().Execute("DELETE FROM agent");
    wrb::StoreSeed(Store(), seed);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static bool changed = true;
    if (changed) {
        Fill();
    }
    CCmdProtocol request(wrb::ReceivedText({data, size}).c_str());
    std::wstring name;
    uint32_t replyId = 0;
    request >> name >> replyId;
    const std::optional<DbCommand> command = wrb::FindDbCommand(name);
    if (!command) {
        changed = false;
    } else if (wrb::DescribeDbCommand(*command).answer == DbAnswer::None) {
        changed = RunTextCommand(Store(), *command, request) != 0;
    } else {
        changed = false;
        const auto before = Store().Changes();
        const auto answer = AnswerTextCommand(Store(), *command, request);
        REQUIRE(before == Store().Changes());
        REQUIRE(!answer || answer->size() < 4096);
    }
    REQUIRE(!Store().InTransaction());
    return 0;
}
