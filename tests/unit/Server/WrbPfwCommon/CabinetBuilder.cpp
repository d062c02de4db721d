#include "CabinetBuilder.h"

#include <windows.h>
// After windows.h, whose types it uses.
#include <fci.h>
#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "UniqueName.h"

namespace {

int File(INT_PTR handle) {
    return static_cast<int>(handle);
}

INT_PTR DIAMONDAPI Open(char* name, int flags, int mode, int*, void*) {
    return _open(name, flags | _O_BINARY, mode);
}

// The context is the folder of the writer's files.
BOOL DIAMONDAPI ScratchName(char* name, int capacity, void* context) {
    static int count = 0;
    return std::snprintf(name, static_cast<std::size_t>(capacity), "%sscratch%d", static_cast<char*>(context),
                         count++) > 0;
}

INT_PTR DIAMONDAPI OpenSource(char* name, USHORT* date, USHORT* time, USHORT* attributes, int* error, void* context) {
    *date = 0x5821;
    *time = 0;
    *attributes = _A_ARCH;
    return Open(name, _O_RDONLY, 0, error, context);
}

HFCI OpenWriter(ERF& error, CCAB& parameters) {
    return FCICreate(
        &error, [](PCCAB, char*, long, BOOL, void*) { return 0; }, [](ULONG bytes) { return std::malloc(bytes); },
        [](void* memory) { std::free(memory); }, Open,
        [](INT_PTR file, void* buffer, UINT count, int*, void*) {
            return static_cast<UINT>(_read(File(file), buffer, count));
        },
        [](INT_PTR file, void* buffer, UINT count, int*, void*) {
            return static_cast<UINT>(_write(File(file), buffer, count));
        },
        [](INT_PTR file, int*, void*) { return _close(File(file)); },
        [](INT_PTR file, long distance, int origin, int*, void*) { return _lseek(File(file), distance, origin); },
        [](char* name, int*, void*) { return std::remove(name); }, ScratchName, &parameters, parameters.szCabPath);
}

}  // namespace

Bytes BuildCabinet(const std::vector<tagNewEntry>& entries) {
    const auto folder = std::filesystem::temp_directory_path() / wrb::test::UniqueName(L"fci");
    std::filesystem::create_directory(folder);
    ERF error = {};
    CCAB parameters = {};
    parameters.cb = parameters.cbFolderThresh = 0x7FFFFFFF;
    std::strcpy(parameters.szCab, "cabinet");
    std::snprintf(parameters.szCabPath, sizeof parameters.szCabPath, "%s\\", folder.string().c_str());
    const HFCI writer = OpenWriter(error, parameters);
    bool good = writer != nullptr;
    const auto next = [](PCCAB, ULONG, void*) { return FALSE; };
    const auto status = [](UINT, ULONG, ULONG, void*) { return 0L; };
    for (std::size_t i = 0; good && i < entries.size(); ++i) {
        std::string source = (folder / "source").string();
        std::ofstream(source, std::ios::binary)
            .write(reinterpret_cast<const char*>(entries[i].data.data()),
                   static_cast<std::streamsize>(entries[i].data.size()));
        std::string name = entries[i].name;
        good = FCIAddFile(writer, source.data(), name.data(), FALSE, next, status, OpenSource, tcompTYPE_MSZIP);
    }
    good = good && FCIFlushCabinet(writer, FALSE, next, status);
    FCIDestroy(writer);
    if (!good) {
        throw std::runtime_error("the cabinet writer failed");
    }
    std::ifstream file(folder / "cabinet", std::ios::binary);
    Bytes cabinet(std::istreambuf_iterator<char>(file), {});
    file.close();
    std::filesystem::remove_all(folder);
    return cabinet;
}

Bytes Noise(std::size_t size, uint32_t seed) {
    Bytes noise(size);
    for (uint8_t& byte : noise) {
        seed = seed * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(seed >> 24);
    }
    return noise;
}
