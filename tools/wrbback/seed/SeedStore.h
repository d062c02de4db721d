// From the seed file into the database, and back.
#pragma once

#include "SeedFile.h"

namespace wrb {

class SqlDb;

// Every agent of the seed replaces the one with its uid, if there is one; other agents stay. The service switches
// change when the seed has any. All in one transaction: seeding twice is seeding once, and a failure changes nothing.
// Throws SqlError.
void StoreSeed(SqlDb& db, const SeedData& seed);

// All agents, by uid, and the service switches. Throws SqlError.
SeedData ReadSeed(SqlDb& db);

}  // namespace wrb
