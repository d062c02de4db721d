#include <new>

#include "PackageExtraction.h"
#include "WrbPfwCommon.h"

bool fpkExtract(const char* package, const char* directory, fpkCallback callback, void* context) {
    if (package == nullptr || directory == nullptr) {
        return false;
    }
    try {
        return wrb::ExtractPackage(package, directory, callback, context);
    } catch (const std::bad_alloc&) {
        return false;
    }
}
