// A package beside an empty target folder, both gone after the test.
#pragma once

#include <map>
#include <string>

#include "CabinetBuilder.h"
#include "TempFolder.h"

class CPackageFolder {
  public:
    CPackageFolder() { std::filesystem::create_directory(m_root / L"target"); }

    std::string Package() const { return (m_root / L"package.cab").string(); }
    std::string Target() const { return (m_root / L"target").string(); }

    void WritePackage(const Bytes& bytes) const {
        wrb::test::WriteAll(Package(), std::string(bytes.begin(), bytes.end()));
    }

    void EmptyTarget() const {
        std::filesystem::remove_all(Target());
        std::filesystem::create_directory(Target());
    }

    // Everything under the root but the package: path relative to the target, and content ("<>" for a folder).
    std::map<std::string, Bytes> Files() const {
        std::map<std::string, Bytes> files;
        for (const auto& item : std::filesystem::recursive_directory_iterator(m_root.Path())) {
            if (item.path() != Package() && item.path() != Target()) {
                const std::string content = item.is_directory() ? "<>" : wrb::test::ReadAll(item);
                files[item.path().lexically_relative(Target()).string()] = Bytes(content.begin(), content.end());
            }
        }
        return files;
    }

  private:
    wrb::test::CTempFolder m_root;
};
