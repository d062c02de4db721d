#include "INICache.h"

// Function statics: the first call makes the cache, from any thread and from any static initialiser.

CINICache& ScanIniCache() {
    static CINICache cache;
    return cache;
}

CINICache& ServerIniCache() {
    static CINICache cache;
    return cache;
}

CINICache& SbaIniCache() {
    static CINICache cache;
    return cache;
}
