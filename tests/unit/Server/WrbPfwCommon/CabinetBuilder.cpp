#include "CabinetBuilder.h"

#include <windows.h>
// After windows.h, whose types it uses.
#include <fci.h>
#include <fcntl.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <stdexcept>

namespace {

// The writer's files: its sources, its scratch files and the finished cabinets, all in memory.
struct tagDisk {
    std::map<std::string, Bytes> files;
    int scratchFiles = 0;
    bool nameIsUtf8 = false;
};

struct tagOpenFile {
    Bytes& bytes;
    std::size_t position = 0;
};

tagOpenFile& File(INT_PTR handle) {
    return *reinterpret_cast<tagOpenFile*>(handle);
}

void* DIAMONDAPI Alloc(ULONG bytes) {
    return std::malloc(bytes);
}
void DIAMONDAPI Free(void* memory) {
    std::free(memory);
}
INT_PTR DIAMONDAPI Open(char* name, int flags, int, int*, void* context) {
    auto& files = static_cast<tagDisk*>(context)->files;
    if ((flags & _O_CREAT) != 0) {
        files[name].clear();
    }
    return reinterpret_cast<INT_PTR>(new tagOpenFile{files.at(name)});
}
UINT DIAMONDAPI Read(INT_PTR handle, void* buffer, UINT count, int*, void*) {
    tagOpenFile& file = File(handle);
    const std::size_t left = file.bytes.size() - file.position;
    const UINT read = count < left ? count : static_cast<UINT>(left);
    std::copy_n(file.bytes.begin() + static_cast<std::ptrdiff_t>(file.position), read, static_cast<uint8_t*>(buffer));
    file.position += read;
    return read;
}
UINT DIAMONDAPI Write(INT_PTR handle, void* buffer, UINT count, int*, void*) {
    tagOpenFile& file = File(handle);
    if (file.bytes.size() < file.position + count) {
        file.bytes.resize(file.position + count);
    }
    std::copy_n(static_cast<const uint8_t*>(buffer), count,
                file.bytes.begin() + static_cast<std::ptrdiff_t>(file.position));
    file.position += count;
    return count;
}
int DIAMONDAPI Close(INT_PTR handle, int*, void*) {
    delete &File(handle);
    return 0;
}
long DIAMONDAPI Seek(INT_PTR handle, long distance, int origin, int*, void*) {
    tagOpenFile& file = File(handle);
    const std::size_t base = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? file.position : file.bytes.size();
    file.position = base + static_cast<std::size_t>(distance);
    return static_cast<long>(file.position);
}
int DIAMONDAPI Delete(char* name, int*, void* context) {
    return static_cast<tagDisk*>(context)->files.erase(name) == 1 ? 0 : -1;
}
BOOL DIAMONDAPI ScratchName(char* name, int capacity, void* context) {
    return std::snprintf(name, static_cast<std::size_t>(capacity), "scratch%d",
                         static_cast<tagDisk*>(context)->scratchFiles++) > 0;
}
int DIAMONDAPI Placed(PCCAB, char*, long, BOOL, void*) {
    return 0;
}
INT_PTR DIAMONDAPI OpenSource(char* name, USHORT* date, USHORT* time, USHORT* attributes, int* error, void* context) {
    *date = 0x5821;
    *time = 0;
    *attributes = static_cast<USHORT>(_A_ARCH | (static_cast<tagDisk*>(context)->nameIsUtf8 ? _A_NAME_IS_UTF : 0));
    return Open(name, 0, 0, error, context);
}
long DIAMONDAPI Status(UINT, ULONG, ULONG, void*) {
    return 0;
}
BOOL DIAMONDAPI NextCabinet(PCCAB cabinet, ULONG, void*) {
    std::snprintf(cabinet->szCab, sizeof cabinet->szCab, "cab%03d", cabinet->iCab);
    return TRUE;
}

}  // namespace

std::vector<Bytes> BuildCabinets(const std::vector<tagNewEntry>& entries, uint32_t cabinetBytes) {
    tagDisk disk;
    ERF error = {};
    CCAB parameters = {};
    parameters.cb = cabinetBytes;
    parameters.cbFolderThresh = 0x7FFFFFFF;
    std::strcpy(parameters.szCab, "cab000");
    const HFCI writer =
        FCICreate(&error, Placed, Alloc, Free, Open, Read, Write, Close, Seek, Delete, ScratchName, &parameters, &disk);
    bool good = writer != nullptr;
    for (std::size_t i = 0; good && i < entries.size(); ++i) {
        char source[] = "source";
        disk.files[source] = entries[i].data;
        disk.nameIsUtf8 = entries[i].nameIsUtf8;
        std::string name = entries[i].name;
        good = FCIAddFile(writer, source, name.data(), FALSE, NextCabinet, Status, OpenSource, tcompTYPE_MSZIP);
    }
    good = good && FCIFlushCabinet(writer, FALSE, NextCabinet, Status);
    FCIDestroy(writer);
    if (!good) {
        throw std::runtime_error("the cabinet writer failed");
    }
    std::vector<Bytes> cabinets;
    for (auto& [name, bytes] : disk.files) {
        if (name.starts_with("cab")) {
            cabinets.push_back(std::move(bytes));
        }
    }
    return cabinets;
}

Bytes Noise(std::size_t size, uint32_t seed) {
    Bytes noise(size);
    for (uint8_t& byte : noise) {
        seed = seed * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(seed >> 24);
    }
    return noise;
}

uint32_t CCabinetPatch::Get(std::size_t at) const {
    uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        number |= static_cast<uint32_t>(m_cabinet.at(at + i)) << (8 * i);
    }
    return number;
}

void CCabinetPatch::Put(std::size_t at, uint32_t number) {
    for (std::size_t i = 0; i < 4; ++i) {
        m_cabinet.at(at + i) = static_cast<uint8_t>(number >> (8 * i));
    }
}

// The header's number at 16 is where the entries begin; each is 16 bytes and a terminated name.
std::size_t CCabinetPatch::EntryAt(std::size_t index) const {
    std::size_t at = Get(16);
    for (; index > 0; --index) {
        at += 16;
        while (m_cabinet.at(at++) != 0) {
        }
    }
    return at;
}
