#include "Commands.h"
#include "Console.h"
#include "ExitCode.h"
#include "SeedStore.h"
#include "SqlAddress.h"
#include "Store.h"
#include "Text.h"

namespace wrb {

int Seed(const std::string& file, const std::string& database) {
    SeedData seed;
    try {
        seed = ReadSeedFile(Utf8ToWide(file));
    } catch (const SeedError& error) {
        return Fail(file + ": " + error.what(), kExitUsage);
    }
    StoreSeed(*CreateStore(Utf8ToWide(database)), seed);
    PrintOut("wrbback: " + std::to_string(seed.agents.size()) + " agents in " +
             ParseSqlAddress(Utf8ToWide(database)).name + "\n");
    return kExitOk;
}

}  // namespace wrb
