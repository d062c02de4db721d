// The scan INI of a test: bound to the product's cache, gone with the object.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "INICache.h"
#include "Text.h"
#include "UniqueName.h"

class CScanIni {
  public:
    // Without a text there is a path but no file.
    explicit CScanIni(const std::wstring& text)
        : m_path(std::filesystem::temp_directory_path() / wrb::test::UniqueName(L"ini")) {
        if (!text.empty()) {
            std::ofstream(m_path) << wrb::WideToAnsi(text);
        }
        ScanIniCache().clear();
        ScanIniCache().init(m_path.wstring().c_str(), 6);
    }
    ~CScanIni() {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    CScanIni(const CScanIni&) = delete;
    CScanIni& operator=(const CScanIni&) = delete;

  private:
    std::filesystem::path m_path;
};
