#include <algorithm>
#include <array>
#include <cstring>

#include "BundleRecord.h"
#include "Bytes.h"
#include "DbAllScanRecord.h"
#include "DbApiHeader.h"
#include "DbCommands.h"
#include "Formats.h"
#include "Text.h"
#include "VexorRecords.h"

namespace wrb {
namespace {

constexpr std::string_view kScanTypes[] = {"MS", "RT", "PS", "SN"};

using Body = void (*)(FieldCursor& body);

void DecodeAllScanConfig(FieldCursor& body) {
    static constexpr std::string_view kNumbers[] = {"flags",
                                                    "compressedLayer",
                                                    "oleLayer",
                                                    "possibleVirusCustActInActiveAct",
                                                    "frequency",
                                                    "hour",
                                                    "minute",
                                                    "amPm",
                                                    "dayOfMonth",
                                                    "dayOfWeek",
                                                    "weekOrdinalOfMonth",
                                                    "weekdayOfMonth"};
    if (!body.TakeBool("hasConfig")) {
        return;
    }
    body.TakeBool("hasExtra");
    for (std::size_t scan = 0; scan < kScanTypeCount; ++scan) {
        const std::string prefix = std::string(kScanTypes[scan]) + " ";
        const auto numbers = FindScanGroup(static_cast<ScanType>(scan), ScanGroupKind::Main).numbers.size();
        for (const std::string_view name : std::span(kNumbers).first(std::min(numbers, std::size(kNumbers)))) {
            body.TakeInteger(prefix + std::string(name));
        }
        body.TakeInteger(prefix + "spyware flags");
        for (const char* name : {"extList", "moveDir", "custAction"}) {
            body.TakeText(prefix + name);
        }
    }
}

void DecodeAllScanLists(FieldCursor& body) {
    for (const std::string_view scan : kScanTypes) {
        for (const char* name : {"excludedFolder", "excludedFile", "excludedExt", "excludeFileExtList"}) {
            if (scan != "RT" || std::strcmp(name, "excludeFileExtList") != 0) {
                body.TakeText(std::string(scan) + " " + name);
            }
        }
    }
}

void DecodeBehaviourPolicies(FieldCursor& body) {
    const uint32_t count = body.TakeCount("policies");
    for (uint32_t i = 0; i < count; ++i) {
        const std::string number = " " + std::to_string(i);
        body.TakeText("policyId" + number);
        body.TakeInteger("action" + number);
        body.TakeBool("enable" + number);
    }
}

// "FATaskId" of "FATaskId_%d"; the word of all bits is "flags".
template <typename Values>
std::string FieldNameOf(const BundleRow<Values>& row) {
    if (row.kind == BundleRowKind::Bit) {
        return "flags";
    }
    const std::wstring_view key(row.key);
    const std::string name = WideToUtf8(key.substr(0, key.find(L'%')));
    return name.substr(0, name.find_last_not_of('_') + 1);
}

template <typename Values>
void DecodeRecord(FieldCursor& body, const std::string& suffix) {
    Values values;
    ForEachField<Values>(values, [&](const BundleRow<Values>& row, auto& /*field*/) {
        const std::string name = FieldNameOf(row) + suffix;
        if (row.number != nullptr) {
            body.TakeInteger(name);
        } else {
            body.TakeText(name);
        }
    });
}

template <typename Values>
void DecodeBundle(FieldCursor& body) {
    if constexpr (kHasItems<Values>) {
        const uint32_t count = body.TakeCount("records");
        for (uint32_t i = 0; i < count; ++i) {
            DecodeRecord<Values>(body, " " + std::to_string(i));
        }
    } else {
        DecodeRecord<Values>(body, "");
    }
}

void DecodeRow(FieldCursor& body) {
    body.TakeText("row (JSON)");
}

constexpr struct {
    std::wstring_view name;
    Body answer;
} kBodies[] = {
    {L"DBV2_CLIENT_GET_ALL_SCAN_CFG", DecodeAllScanConfig},
    {L"DBV2_CLIENT_GET_ALL_SCAN_EX", DecodeAllScanLists},
    {L"DBV2_GET_VEXOR_CUSTOM_BM_CFG", DecodeBehaviourPolicies},
    {L"CMDLOGV2_SEND_CFWLOG", DecodeRow},
    {L"CMDLOGV2_SEND_RESTORELOG", DecodeRow},
    {L"WC_SET_SPYWARE_LOG_EVENT", [](FieldCursor& body) { body.TakeInteger("event"); }},
};

// The answer's body by the bundle whose command it is; null: none.
template <typename... Values>
Body FindBundle(std::wstring_view command, const std::tuple<Values...>*) {
    Body found = nullptr;
    ((kBundle<Values>.command != nullptr && command == kBundle<Values>.command ? found = DecodeBundle<Values>
                                                                               : nullptr),
     ...);
    return found;
}

Body FindAnswer(std::wstring_view command) {
    for (const auto& body : kBodies) {
        if (body.name == command) {
            return body.answer;
        }
    }
    return FindBundle(command, static_cast<const Bundles*>(nullptr));
}

// A request's body is one text, the uid. No whole answer's body is one.
bool IsOneText(std::span<const uint8_t> body) {
    uint32_t bytes = 0;
    if (body.size() < sizeof bytes + sizeof(wchar_t)) {
        return false;
    }
    std::memcpy(&bytes, body.data(), sizeof bytes);
    const std::wstring text = WideTextOf(body.subspan(sizeof bytes));
    return bytes == body.size() - sizeof bytes && text.back() == L'\0' &&
           std::all_of(text.begin(), text.end() - 1, [](wchar_t c) { return c >= L' '; });
}

void DecodeBody(FieldCursor& cursor, const std::wstring& name, bool isInFile) {
    const Body body = FindAnswer(name);
    if (isInFile) {
        cursor.TakeText("file with the message");
    } else if (name.starts_with(L"DBV2_") && IsOneText(cursor.Rest())) {
        cursor.TakeText("uid");
    } else if (body != nullptr) {
        body(cursor);
    } else if (!cursor.AtEnd()) {
        cursor.TakeRest("body");
        cursor.Fail("a message of this name has no known body");
    }
}

// What it says of the body: its name, and whether it is in a file.
std::pair<std::wstring, bool> DecodeHeader(FieldCursor& cursor) {
    constexpr uint32_t kInFile = 0x02;
    constexpr std::size_t kControlBytes = 16;
    cursor.TakeInteger("format value");
    if (cursor.TakeCount("length of the control block") != kControlBytes) {
        cursor.Fail("the control block has another length than 16");
    }
    cursor.TakeBytes("mark", 4);
    const uint64_t flags = cursor.TakeNumber("flags", 4, true);
    cursor.TakeNumber("status", 4, true);
    cursor.TakeNumber("zero", 4);
    std::wstring name = cursor.TakeText("name");
    cursor.TakeText("id");
    return {std::move(name), (flags & kInFile) != 0};
}

void DecodeFrameHeader(FieldCursor cursor) {
    DecodeHeader(cursor);
    if (cursor.TakeInteger("version") != 0) {
        cursor.TakeInteger("process id");
        cursor.TakeInteger("thread id");
        cursor.TakeText("program");
        cursor.TakeText("function");
    }
    cursor.TakeRest("rest");
}

}  // namespace

bool IsMessage(std::span<const uint8_t> bytes) {
    return BeginsWith(bytes, {4, 0, 0, 0});
}

void DecodeMessage(FieldCursor& cursor) {
    const auto [name, isInFile] = DecodeHeader(cursor);
    DecodeBody(cursor, name, isInFile);
}

bool IsFrame(std::span<const uint8_t> bytes) {
    return BeginsWith(bytes, {0x03, 0x07, 0x1A, 0x0E});
}

void DecodeFrame(FieldCursor& cursor) {
    cursor.TakeNumber("mark", 4, true);
    const auto bytes = static_cast<std::size_t>(cursor.TakeNumber("length of the header", 4));
    DecodeFrameHeader(cursor.TakePart(bytes, "header: "));
    if (IsMessage(cursor.Rest())) {
        DecodeMessage(cursor);
    } else if (IsText(cursor.Rest())) {
        DecodeText(cursor);
    } else {
        cursor.Fail("no request follows the header");
    }
}

}  // namespace wrb
