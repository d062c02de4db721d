#include "ZipFile.h"

#include <array>

namespace wrb {
namespace {

constexpr uint32_t kVersion = 20;
constexpr uint32_t kDate = 0x21;  // 1980-01-01, the earliest that the format has

constexpr std::array<uint32_t, 256> kCrcTable = [] {
    std::array<uint32_t, 256> table{};
    for (uint32_t i = 0; i < table.size(); ++i) {
        uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1) != 0 ? 0xEDB88320 ^ (value >> 1) : value >> 1;
        }
        table[i] = value;
    }
    return table;
}();

uint32_t Crc(std::string_view bytes) {
    uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc = kCrcTable[(crc ^ static_cast<unsigned char>(byte)) & 0xFF] ^ (crc >> 8);
    }
    return ~crc;
}

// Little-endian numbers.
void Put(std::string& out, uint64_t number, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        out += static_cast<char>(number >> 8 * i & 0xFF);
    }
}

// The fields that the header before a file and the one in the directory share.
void PutCommon(std::string& out, uint32_t crc, uint32_t size, uint32_t nameLength) {
    Put(out, kVersion, 2);
    Put(out, 0, 6);  // flags, method, time
    Put(out, kDate, 2);
    Put(out, crc, 4);
    Put(out, size, 4);
    Put(out, size, 4);
    Put(out, nameLength, 4);  // and no extra field
}

}  // namespace

void ZipFile::Add(std::string_view name, std::string_view bytes) {
    const Entry entry{std::string(name), Crc(bytes), static_cast<uint32_t>(bytes.size()),
                      static_cast<uint32_t>(m_files.size())};
    m_files += "PK\3\4";
    PutCommon(m_files, entry.crc, entry.size, static_cast<uint32_t>(name.size()));
    m_files.append(name).append(bytes);
    m_entries.push_back(entry);
}

std::string ZipFile::Bytes() const {
    std::string directory;
    for (const Entry& entry : m_entries) {
        directory += "PK\1\2";
        Put(directory, kVersion, 2);
        PutCommon(directory, entry.crc, entry.size, static_cast<uint32_t>(entry.name.size()));
        Put(directory, 0, 2);  // comment
        Put(directory, 0, 4);  // disk, internal attributes
        Put(directory, 0, 4);  // external attributes
        Put(directory, entry.offset, 4);
        directory += entry.name;
    }
    std::string end = "PK\5\6";
    Put(end, 0, 4);  // disks
    Put(end, static_cast<uint32_t>(m_entries.size()), 2);
    Put(end, static_cast<uint32_t>(m_entries.size()), 2);
    Put(end, static_cast<uint32_t>(directory.size()), 4);
    Put(end, static_cast<uint32_t>(m_files.size()), 4);
    Put(end, 0, 2);
    return m_files + directory + end;
}

}  // namespace wrb
