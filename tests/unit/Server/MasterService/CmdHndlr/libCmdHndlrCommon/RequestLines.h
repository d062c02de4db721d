// What the database server of a test has been asked, for comparing, and the answers that it makes.
#pragma once

#include <string>
#include <vector>

#include "FakeDbService.h"
#include "Serializer.h"

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

// The answer that carries this record.
inline std::string RecordMessage(const std::wstring& command, const ISerializable& record) {
    CSerializer body;
    body << record;
    return wrb::test::MessageBytes(command, {reinterpret_cast<const char*>(body.Data()), body.GetSize()});
}
