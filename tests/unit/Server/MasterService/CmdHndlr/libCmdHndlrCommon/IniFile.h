// An INI file of a test, gone with the object.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "Text.h"
#include "UniqueName.h"

class CIniFile {
  public:
    // Without a text there is a path but no file.
    explicit CIniFile(const std::wstring& text = {})
        : m_path(std::filesystem::temp_directory_path() / (wrb::test::UniqueName(L"ini") + L".ini")) {
        if (!text.empty()) {
            std::ofstream(m_path) << wrb::WideToAnsi(text);
        }
    }
    ~CIniFile() {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    CIniFile(const CIniFile&) = delete;
    CIniFile& operator=(const CIniFile&) = delete;

    std::wstring Path() const { return m_path.wstring(); }

  private:
    std::filesystem::path m_path;
};
