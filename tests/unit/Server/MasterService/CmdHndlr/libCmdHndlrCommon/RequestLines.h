// What the database server of a test has been asked and what has been logged, for comparing; the answers that it makes.
#pragma once

#include <string>
#include <vector>

#include "CapturedLog.h"
#include "FakeDbService.h"
#include "Serializer.h"

inline constexpr wchar_t kUid[] = L"12345678-1234-1234-1234-123456789abc";

// The fields of each request, "|" between them, the reply id left out, once there are `count` requests.
inline std::vector<std::wstring> RequestLines(const wrb::test::CFakeDbService& db, std::size_t count) {
    std::vector<std::wstring> all;
    for (const wrb::test::tagDbRequest& request : db.WaitFor(count)) {
        const std::vector<std::wstring> fields = request.Fields();
        std::wstring& line = all.emplace_back(fields[0]);
        for (std::size_t i = 2; i < fields.size(); ++i) {
            line += L"|" + fields[i];
        }
    }
    return all;
}

// The lines of level 8 since the last call, which are the library's own: the database client has other levels.
inline std::vector<std::wstring> TakeOwnLines() {
    std::vector<std::wstring> texts;
    for (const tagCapturedLine& line : TakeCapturedLog()) {
        if (line.level == 8) {
            texts.push_back(line.text);
        }
    }
    return texts;
}

// The answer that carries this record.
inline std::string RecordMessage(const std::wstring& command, const ISerializable& record) {
    CSerializer body;
    body << record;
    return wrb::test::MessageBytes(command, {reinterpret_cast<const char*>(body.Data()), body.GetSize()});
}
