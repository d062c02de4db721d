// The INI file of a test: bound to one of the product's caches, gone with the object.
#pragma once

#include <string>

#include "INICache.h"
#include "TempFolder.h"
#include "Text.h"

class CBoundIni {
  public:
    // Without a text there is a path but no file.
    explicit CBoundIni(const std::wstring& text, CINICache& cache = ScanIniCache()) {
        const std::filesystem::path path = m_folder / L"test.ini";
        if (!text.empty()) {
            wrb::test::WriteAll(path, wrb::WideToAnsi(text));
        }
        cache.clear();
        cache.init(path.wstring().c_str(), 6);
    }

  private:
    wrb::test::CTempFolder m_folder;
};
