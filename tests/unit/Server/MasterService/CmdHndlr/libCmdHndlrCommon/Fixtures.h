// The database server, the INI file and the log of a test: what was asked and logged, for comparing, and the answers.
#pragma once

#include "CapturedLog.h"
#include "FakeDbService.h"
#include "INICache.h"
#include "Serializer.h"
#include "TempFolder.h"
#include "Text.h"

inline constexpr wchar_t kUid[] = L"12345678-1234-1234-1234-123456789abc";

// The fields of each request, "|" between them, the reply id left out, once there are `count` requests.
inline std::vector<std::wstring> RequestLines(const wrb::test::FakeDbService& db, std::size_t count) {
    std::vector<std::wstring> all;
    for (const wrb::test::DbRequest& request : db.WaitFor(count)) {
        const std::vector<std::wstring> fields = request.Fields();
        std::wstring& line = all.emplace_back(fields[0]);
        for (std::size_t i = 2; i < fields.size(); ++i) {
            line += L"|" + fields[i];
        }
    }
    return all;
}

// The lines of level 8 since the last call, which are the library's own: the database client has other levels.
inline std::wstring TakeOwnText() {
    std::wstring text;
    for (const CapturedLine& line : TakeCapturedLog()) {
        text += line.level == 8 ? line.text + L"\n" : L"";
    }
    return text;
}

// The answer that carries this record.
inline std::string RecordMessage(const std::wstring& command, const ISerializable& record) {
    CSerializer body;
    body << record;
    return wrb::test::MessageBytes(command, {reinterpret_cast<const char*>(body.Data()), body.GetSize()});
}

// An INI file that is bound to one of the product's caches and gone with the object.
class BoundIni {
  public:
    // Without a text there is a path but no file.
    explicit BoundIni(const std::wstring& text, CINICache& cache = ScanIniCache()) {
        const std::filesystem::path path = m_folder / L"test.ini";
        if (!text.empty()) {
            wrb::test::WriteAll(path, wrb::WideToAnsi(text));
        }
        cache.clear();
        cache.init(path.wstring().c_str(), 6);
    }

  private:
    wrb::test::TempFolder m_folder;
};
