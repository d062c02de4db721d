#include "INICache.h"

// Statics of functions: whoever comes first, from any thread or initialiser, finds a finished cache.

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
