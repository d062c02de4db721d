// The settings of an update message, with values that a test can look for afterwards.
#pragma once

#include <string>
#include <vector>

#include "ScanGroup.h"

namespace wrb::test {

struct UpdateField {
    std::wstring key;
    std::wstring value;
};

// One field for each of the group's, in the order of the message. The two variants differ in every field; the
// first has other numbers and texts for each scan type.
inline std::vector<UpdateField> UpdateFields(const ScanGroup& group, bool variant) {
    std::vector<UpdateField> fields;
    for (const ScanRow* const row : group.updateRows) {
        const auto number = static_cast<int>(fields.size());
        const auto base = static_cast<int>(group.configFlag);
        std::wstring value = std::to_wstring(variant ? number - 12 - base : 0x7FFFFFFF - number);
        if (row->kind == ScanRowKind::Bit) {
            value = (number % 2 == 0) == variant ? L"1" : L"0";
        } else if (row->kind == ScanRowKind::Choice) {
            value = variant ? L"1" : L"2";
        } else if (row->kind != ScanRowKind::Int) {
            value = std::wstring(row->key) + (variant ? L" = one; \xfc " + std::wstring(group.name) : L"");
        }
        fields.push_back({std::wstring(row->key), value});
    }
    return fields;
}

// The fields as the rest of a message.
inline std::wstring JoinFields(const std::vector<UpdateField>& fields) {
    std::wstring text;
    for (const UpdateField& field : fields) {
        text += (&field == fields.data() ? L"" : L"\t") + field.value;
    }
    return text;
}

}  // namespace wrb::test
