// A ZIP archive of a few texts, stored without compression.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace wrb {

class ZipFile {
  public:
    // `name` is ASCII. The archive holds less than 4 GiB.
    void Add(std::string_view name, std::string_view bytes);

    // The whole archive.
    std::string Bytes() const;

  private:
    struct Entry {
        std::string name;
        uint32_t crc;
        uint32_t size;
        uint32_t offset;
    };

    std::string m_files;
    std::vector<Entry> m_entries;
};

}  // namespace wrb
