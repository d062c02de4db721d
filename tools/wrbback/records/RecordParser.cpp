#include "RecordParser.h"

#include <json/reader.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>

#include "AgentUid.h"
#include "CalendarTime.h"
#include "Clock.h"
#include "LogPoolRecord.h"
#include "MsgSerializer.h"
#include "QmAgentClient.h"
#include "ReceivedMessage.h"
#include "ServicePipes.h"
#include "Text.h"
#include "WrbClient.h"
#include "cmdlog_OutputCmd.h"

namespace wrb {
namespace {

constexpr int kDeepestJson = 4;             // a row is an object in an object
constexpr uint32_t kLongestRow = 1u << 20;  // bytes; more than the longest texts of all columns, escaped
constexpr std::size_t kShownCharacters = 64;

// What a log row's frame must say, by the command that brings it.
constexpr struct {
    const wchar_t* command;
    const RecordTable& table;
    const LogTable& frame;
} kLogCommands[] = {
    {kSendCfwLog, kCfwLogRecords, kCfwLogTable},
    {kSendRestoreLog, kRestoreLogRecords, kRestoreLogTable},
};

// The fields of each event: 't' a text, the others numbers (MostOf). A text at the end takes the TABs that are left.
constexpr struct {
    const wchar_t* name;
    std::string_view fields;
} kAgentEvents[] = {
    {kQmRtsStatusChange, "n"},
    {kQmSendFirewallLog, "tsttwwwwwwtt"},
};

[[noreturn]] void Refuse(const std::string& why) {
    throw std::runtime_error(why);
}

[[noreturn]] void RefuseCommand(std::wstring_view name) {
    Refuse("no such command: " + WideToUtf8(name.substr(0, kShownCharacters)));
}

void RequireEnd(const CMsgSerializer& message) {
    if (message.Remaining() != 0) {
        Refuse("bytes behind the body");
    }
}

Json::Value ParseJson(const std::string& text) {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["stackLimit"] = kDeepestJson;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    std::string errors;
    if (!reader->parse(text.data(), text.data() + text.size(), &value, &errors) || !value.isObject()) {
        Refuse("not a JSON object");
    }
    return value;
}

const Json::Value& Member(const Json::Value& object, const std::string& key) {
    const Json::Value* member = object.find(key.data(), key.data() + key.size());
    if (member == nullptr) {
        Refuse("\"" + key + "\" is missing");
    }
    return *member;
}

void RequireMembers(const Json::Value& object, std::size_t count, const char* what) {
    if (!object.isObject() || object.size() != count) {
        Refuse(std::string(what) + " has other members than it should");
    }
}

void RequireText(const Json::Value& object, const char* key, const char* text) {
    const Json::Value& member = Member(object, key);
    if (!member.isString() || member.asString() != text) {
        Refuse("\"" + std::string(key) + "\" is not " + text);
    }
}

std::optional<RecordValue> ValueOf(const Json::Value& value) {
    switch (value.type()) {
        case Json::stringValue:
            return Utf8ToWide(value.asString());
        case Json::intValue:
            return value.asInt64();
        default:  // numbers above 2^63 are of another type, and fit no column
            return std::nullopt;
    }
}

Record RecordOf(const RecordTable& table, const Json::Value& columns) {
    RequireMembers(columns, table.columns.size(), "\"COL\"");
    Record record{&table, {}};
    for (const RecordColumn& column : table.columns) {
        std::optional<RecordValue> value = ValueOf(Member(columns, column.name));
        if (!value || !FitsColumn(column.kind, *value)) {
            Refuse(std::string("\"") + column.name + "\" is not " + DescribeColumnKind(column.kind));
        }
        if (column.kind == ColumnKind::Uid) {
            auto& uid = std::get<std::wstring>(*value);
            uid.resize(std::min(uid.size(), kUidCharacters));
        }
        record.values.push_back(std::move(*value));
    }
    return record;
}

Record EventOf(const wchar_t* service, const std::wstring& name, const std::wstring& fields) {
    if (fields.size() > kLongestRecordText) {
        Refuse("the fields are too long");
    }
    return {&kEventRecords, {LocalTimeText(SystemClock().CalendarSeconds()), std::wstring(service), name, fields}};
}

// The largest number of a field; none is negative.
uint64_t MostOf(char kind) {
    switch (kind) {
        case 'w':
            return UINT16_MAX;
        case 'n':
            return UINT32_MAX;
        default:  // 's', calendar seconds
            return INT64_MAX;
    }
}

bool IsNumberUpTo(uint64_t most, std::wstring_view field) {
    constexpr std::size_t kMostDigits = 19;  // these always fit into 64 bits
    return !field.empty() && field.size() <= kMostDigits &&
           field.find_first_not_of(L"0123456789") == std::wstring_view::npos &&
           std::stoull(std::wstring(field)) <= most;
}

void CheckFields(std::wstring_view rest, std::string_view kinds) {
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        const std::size_t end = i + 1 < kinds.size() ? rest.find(L'\t') : rest.size();
        if (end == std::wstring_view::npos) {
            Refuse("fields are missing");
        }
        if (kinds[i] != 't' && !IsNumberUpTo(MostOf(kinds[i]), rest.substr(0, end))) {
            Refuse("field " + std::to_string(i + 1) + " is not a whole number from 0 to " +
                   std::to_string(MostOf(kinds[i])));
        }
        rest.remove_prefix(std::min(rest.size(), end + 1));
    }
}

}  // namespace

Record ParseLogPoolMessage(std::span<const uint8_t> bytes) {
    CMsgSerializer message;
    LoadReceivedMessage(bytes, message);
    for (const auto& [command, table, frame] : kLogCommands) {
        if (message.Name() == command) {
            if (message.Remaining() > kLongestRow) {
                Refuse("the row is too long");
            }
            std::wstring text;
            message >> text;
            RequireEnd(message);
            const Json::Value row = ParseJson(WideToUtf8(text));
            RequireMembers(row, 4, "the row");
            RequireText(row, "TBL", frame.name);
            RequireText(row, "CATEGORY", frame.category);
            if (Member(row, "VER").type() != Json::intValue || Member(row, "VER") != frame.version) {
                Refuse("\"VER\" is not " + std::to_string(frame.version));
            }
            return RecordOf(table, Member(row, "COL"));
        }
    }
    RefuseCommand(message.Name());
}

Record ParseAgentEvent(std::span<const uint8_t> bytes) {
    if (IsSerialized(bytes)) {
        DiscardSerialized(bytes);
        Refuse("not a text");
    }
    const std::wstring text = ReceivedText(bytes);
    if (bytes.size() != (text.size() + 1) * sizeof(wchar_t)) {
        Refuse("not a text that ends with its NUL");
    }
    const std::size_t end = std::min(text.size(), text.find(L'\t'));
    const std::wstring name = text.substr(0, end);
    const std::wstring fields = text.substr(std::min(text.size(), end + 1));
    for (const auto& event : kAgentEvents) {
        if (name == event.name) {
            CheckFields(fields, event.fields);
            return EventOf(kQmAgentPipe, name, fields);
        }
    }
    RefuseCommand(name);
}

Record ParseSpywareEvent(std::span<const uint8_t> bytes) {
    CMsgSerializer message;
    LoadReceivedMessage(bytes, message);
    if (message.Name() != kWrbSpywareLogEvent) {
        RefuseCommand(message.Name());
    }
    int32_t event = 0;
    message >> event;
    RequireEnd(message);
    return EventOf(kWrbServerPipe, message.Name(), std::to_wstring(event));
}

}  // namespace wrb
