// One unpacking of a package: check everything, then write everything, or leave nothing behind.
#pragma once

#include "WrbPfwCommon.h"

namespace wrb {

// What fpkExtract does, with non-null paths. May throw std::bad_alloc, and whatever the callback throws; the folder is
// then as it was before, unless the callback was already told of written entries.
bool ExtractPackage(const char* package, const char* directory, fpkCallback callback, void* context);

}  // namespace wrb
