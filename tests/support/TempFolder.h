// A folder of its own for a test, gone with the object.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "UniqueName.h"

namespace wrb::test {

class TempFolder {
  public:
    TempFolder() : m_path(std::filesystem::temp_directory_path() / UniqueName(L"folder")) {
        std::filesystem::create_directories(m_path);
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::filesystem::path operator/(const std::wstring& name) const { return m_path / name; }
    std::wstring Path() const { return m_path.wstring(); }

  private:
    std::filesystem::path m_path;
};

inline std::string ReadAll(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

inline void WriteAll(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace wrb::test
