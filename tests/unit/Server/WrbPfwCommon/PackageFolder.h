// A package beside an empty target folder, both gone after the test.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "CabinetBuilder.h"
#include "UniqueName.h"

class CPackageFolder {
  public:
    CPackageFolder() { std::filesystem::create_directories(m_root / "target"); }
    ~CPackageFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_root, ignored);
    }
    CPackageFolder(const CPackageFolder&) = delete;
    CPackageFolder& operator=(const CPackageFolder&) = delete;

    std::string Package() const { return (m_root / "package.cab").string(); }
    std::string Target() const { return (m_root / "target").string(); }

    void WritePackage(const Bytes& bytes) const {
        std::ofstream file(m_root / "package.cab", std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    void EmptyTarget() const {
        std::filesystem::remove_all(m_root / "target");
        std::filesystem::create_directory(m_root / "target");
    }

    // Everything under the root but the package: path relative to the target, and content ("<folder>" for a folder).
    std::map<std::string, Bytes> Files() const {
        std::map<std::string, Bytes> files;
        for (const auto& item : std::filesystem::recursive_directory_iterator(m_root)) {
            if (item.path().filename() != "package.cab" && item.path() != m_root / "target") {
                files[item.path().lexically_relative(m_root / "target").string()] =
                    item.is_directory() ? Bytes{'<', '>'} : ReadFile(item.path());
            }
        }
        return files;
    }

  private:
    static Bytes ReadFile(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(file), {});
    }

    std::filesystem::path m_root = std::filesystem::temp_directory_path() / wrb::test::UniqueName(L"fpk");
};
