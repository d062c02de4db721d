#include "FaultyDisk.h"

#include <atomic>

namespace wrb::test {
namespace {

struct File {
    sqlite3_file base;
    sqlite3_file* real;
};

sqlite3_vfs* s_real = nullptr;
sqlite3_vfs s_vfs;
std::atomic<int> s_left = -1;  // calls until one fails; below 0: none does
std::atomic<int> s_code = SQLITE_OK;
std::atomic<bool> s_forGood = false;
std::atomic<bool> s_failed = false;

sqlite3_file* Real(sqlite3_file* file) {
    return reinterpret_cast<File*>(file)->real;
}

bool Fails() {
    if (s_left < 0 || s_left-- > 0) {
        return false;
    }
    if (s_forGood) {
        s_left = 0;
    }
    s_failed = true;
    return true;
}

template <auto Method>
struct Call;
template <typename Result, typename... Arguments, Result (*sqlite3_io_methods::*Method)(sqlite3_file*, Arguments...)>
struct Call<Method> {
    static Result Pass(sqlite3_file* file, Arguments... arguments) {
        return (Real(file)->pMethods->*Method)(Real(file), arguments...);
    }
    static Result PassOrFail(sqlite3_file* file, Arguments... arguments) {
        return Fails() ? s_code.load() : Pass(file, arguments...);
    }
};

using Methods = sqlite3_io_methods;
const Methods kMethods = {
    2,
    Call<&Methods::xClose>::Pass,
    Call<&Methods::xRead>::PassOrFail,
    Call<&Methods::xWrite>::PassOrFail,
    Call<&Methods::xTruncate>::PassOrFail,
    Call<&Methods::xSync>::PassOrFail,
    Call<&Methods::xFileSize>::PassOrFail,
    Call<&Methods::xLock>::Pass,
    Call<&Methods::xUnlock>::Pass,
    Call<&Methods::xCheckReservedLock>::Pass,
    Call<&Methods::xFileControl>::Pass,
    Call<&Methods::xSectorSize>::Pass,
    Call<&Methods::xDeviceCharacteristics>::Pass,
    Call<&Methods::xShmMap>::PassOrFail,
    Call<&Methods::xShmLock>::Pass,
    Call<&Methods::xShmBarrier>::Pass,
    Call<&Methods::xShmUnmap>::Pass,
    nullptr,
    nullptr,
};

int Open(sqlite3_vfs* /*vfs*/, const char* name, sqlite3_file* file, int flags, int* result) {
    auto* const mine = reinterpret_cast<File*>(file);
    mine->real = reinterpret_cast<sqlite3_file*>(mine + 1);
    const int code = s_real->xOpen(s_real, name, mine->real, flags, result);
    file->pMethods = mine->real->pMethods != nullptr ? &kMethods : nullptr;
    return code;
}

}  // namespace

FaultyDisk::FaultyDisk() {
    s_real = sqlite3_vfs_find(nullptr);
    s_vfs = *s_real;
    s_vfs.zName = "faulty";
    s_vfs.szOsFile += static_cast<int>(sizeof(File));
    s_vfs.xOpen = Open;
    sqlite3_vfs_register(&s_vfs, 1);
}

FaultyDisk::~FaultyDisk() {
    Work();
    sqlite3_vfs_unregister(&s_vfs);
    sqlite3_vfs_register(s_real, 1);
}

void FaultyDisk::FailAfter(int calls, int code, bool forGood) {
    s_failed = false;
    s_code = code;
    s_forGood = forGood;
    s_left = calls;
}

bool FaultyDisk::Work() {
    s_left = -1;
    return s_failed.exchange(false);
}

}  // namespace wrb::test
