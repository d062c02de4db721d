#include "LogPoolRecord.h"

#include <json/writer.h>

#include <iterator>
#include <memory>
#include <sstream>
#include <string_view>
#include <utility>

#include "CalendarTime.h"
#include "CmdProtocol.h"
#include "HostAddress.h"
#include "Text.h"

namespace wrb {
namespace {

using Key = Json::StaticString;  // the row refers to it: no copy of each key for each record

// Tabs and line ends inside a text are escaped by the writer, so that without indentation the row is one line.
Json::StreamWriterBuilder MakeBuilder() {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return builder;
}

std::string Utf8(const wchar_t* text) {
    return text == nullptr ? std::string() : WideToUtf8(text);
}

constexpr std::size_t kRowCharacters = 400;  // of a firewall row without its process

constexpr bool IsHighSurrogate(wchar_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

constexpr bool IsLowSurrogate(wchar_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

void AppendCharacter(std::wstring& row, wchar_t character) {
    static constexpr wchar_t kShort[] = L"\"\"\\\\\bb\ff\nn\rr\tt";  // pairs: the character, its letter
    for (std::size_t i = 0; i + 1 < std::size(kShort); i += 2) {
        if (character == kShort[i]) {
            row += L'\\';
            row += kShort[i + 1];
            return;
        }
    }
    if (character < L' ') {
        static constexpr wchar_t kDigits[] = L"0123456789abcdef";
        row += L"\\u00";
        row += kDigits[character >> 4];
        row += kDigits[character & 15];
    } else {
        row += character;
    }
}

// A JSON string, letter for letter what the JSON writer makes. A lone surrogate becomes U+FFFD.
void AppendText(std::wstring& row, std::wstring_view text) {
    row += L'"';
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            row.append(text, i++, 2);
        } else if (IsHighSurrogate(text[i]) || IsLowSurrogate(text[i])) {
            row += L'\xFFFD';
        } else {
            AppendCharacter(row, text[i]);
        }
    }
    row += L'"';
}

void AppendNumber(std::wstring& row, const wchar_t* key, uint16_t number) {
    row += key;
    row += std::to_wstring(number);
}

void AppendAddress(std::wstring& row, const wchar_t* key, const wchar_t* address) {
    row += key;
    const std::string digits = HostAddressHex(address);
    row.append(digits.begin(), digits.end());
    row += L'"';
}

}  // namespace

std::wstring CfwLogRow(const FirewallLogEntry& entry) {
    CCmdProtocol process;
    process << entry.processPath << entry.processInfo;
    std::wstring row;
    row.reserve(kRowCharacters + process.Text().size());
    row += LR"({"CATEGORY":"CfwLogFieldInfo","COL":{"DATE":)";
    AppendText(row, LocalTimeText(ConvertDateTime(entry.date, entry.time, 0)));
    AppendNumber(row, LR"(,"DIRECTION":)", entry.direction);
    AppendAddress(row, LR"(,"LOCAL_HOST":")", entry.localHost);
    AppendNumber(row, LR"(,"LOG_TYPE":)", entry.logType);
    AppendNumber(row, LR"(,"PORT":)", entry.port);
    AppendNumber(row, LR"(,"PROTOCOL":)", entry.protocol);
    row += LR"(,"PV_NAME":)";
    AppendText(row, process.Text());
    AppendAddress(row, LR"(,"REMOTEHOST":")", entry.remoteHost);
    AppendNumber(row, LR"(,"SUBTYPE":)", entry.subType);
    AppendNumber(row, LR"(,"TYPE":)", entry.type);
    row += LR"(,"UID":)";
    AppendText(row, entry.uid == nullptr ? std::wstring_view() : std::wstring_view(entry.uid));
    row += LR"(},"TBL":"TBL_CFW_LOG","VER":3})";
    return row;
}

int RestoreLogRow(const RestoreLog& log, std::wstring& text) {
    static const Json::StreamWriterBuilder builder = MakeBuilder();
    Json::Value row(Json::objectValue);
    row[Key("TBL")] = kRestoreLogTable.name;
    row[Key("VER")] = kRestoreLogTable.version;
    row[Key("CATEGORY")] = kRestoreLogTable.category;
    Json::Value& columns = row[Key("COL")];
    columns[Key("LOGID")] = Utf8(log.logId);
    columns[Key("UID")] = Utf8(log.uid);
    columns[Key("RECV_TIME")] = WideToUtf8(LocalTimeText(log.received));
    columns[Key("LOG_TYPE")] = log.logType;
    columns[Key("RESULT")] = log.result;
    std::ostringstream out;
    const std::unique_ptr<Json::StreamWriter> writer(builder.newStreamWriter());
    const int error = writer->write(row, &out);
    if (error != 0 || !out) {
        return error != 0 ? error : -1;
    }
    text = Utf8ToWide(out.str());
    return 0;
}

}  // namespace wrb
