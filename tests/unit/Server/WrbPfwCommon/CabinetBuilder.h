// Makes cabinets in memory with the system's own writer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

struct tagNewEntry {
    std::string name;
    Bytes data;
    bool nameIsUtf8 = false;
};

// One cabinet, or a set of them when `cabinetBytes` is too little for all. Compressed (MSZIP).
std::vector<Bytes> BuildCabinets(const std::vector<tagNewEntry>& entries, uint32_t cabinetBytes = 0x7FFFFFFF);

inline Bytes BuildCabinet(const std::vector<tagNewEntry>& entries) {
    return BuildCabinets(entries).at(0);
}

// `size` bytes that do not compress, the same for the same seed.
Bytes Noise(std::size_t size, uint32_t seed = 1);

// The places of a cabinet's directory that tests tamper with. Little-endian numbers.
class CCabinetPatch {
  public:
    explicit CCabinetPatch(Bytes& cabinet) : m_cabinet(cabinet) {}

    void SetEntrySize(std::size_t index, uint32_t bytes) { Put(EntryAt(index), bytes); }
    void SetEntryOffset(std::size_t index, uint32_t offset) { Put(EntryAt(index) + 4, offset); }

  private:
    uint32_t Get(std::size_t at) const;
    void Put(std::size_t at, uint32_t number);
    std::size_t EntryAt(std::size_t index) const;

    Bytes& m_cabinet;
};
