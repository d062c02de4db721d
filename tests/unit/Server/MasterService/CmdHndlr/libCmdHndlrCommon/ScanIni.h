// The scan INI of a test: bound to the product's cache, gone with the object.
#pragma once

#include <string>

#include "INICache.h"
#include "TempFolder.h"
#include "Text.h"

class CScanIni {
  public:
    // Without a text there is a path but no file.
    explicit CScanIni(const std::wstring& text) {
        const std::filesystem::path path = m_folder / L"scan.ini";
        if (!text.empty()) {
            wrb::test::WriteAll(path, wrb::WideToAnsi(text));
        }
        ScanIniCache().clear();
        ScanIniCache().init(path.wstring().c_str(), 6);
    }

  private:
    wrb::test::CTempFolder m_folder;
};
