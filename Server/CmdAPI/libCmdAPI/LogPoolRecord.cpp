#include "LogPoolRecord.h"

#include <json/writer.h>

#include <ctime>
#include <memory>
#include <sstream>
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

}  // namespace

std::wstring LocalTimeText(int64_t seconds) {
    const auto time = static_cast<std::time_t>(seconds);
    std::tm local{};
    if (localtime_s(&local, &time) != 0) {
        return {};
    }
    return FormatWide(L"%04d-%02d-%02d %02d:%02d:%02d", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                      local.tm_hour, local.tm_min, local.tm_sec);
}

Json::Value CfwLogColumns(const FirewallLogEntry& entry) {
    CCmdProtocol process;
    process << entry.processPath << entry.processInfo;
    Json::Value columns(Json::objectValue);
    columns[Key("UID")] = Utf8(entry.uid);
    columns[Key("DATE")] = WideToUtf8(LocalTimeText(ConvertDateTime(entry.date, entry.time, 0)));
    columns[Key("LOCAL_HOST")] = HostAddressHex(entry.localHost);
    columns[Key("REMOTEHOST")] = HostAddressHex(entry.remoteHost);
    columns[Key("PROTOCOL")] = entry.protocol;
    columns[Key("TYPE")] = entry.type;
    columns[Key("SUBTYPE")] = entry.subType;
    columns[Key("PORT")] = entry.port;
    columns[Key("DIRECTION")] = entry.direction;
    columns[Key("PV_NAME")] = WideToUtf8(process.Text());
    columns[Key("LOG_TYPE")] = entry.logType;
    return columns;
}

Json::Value RestoreLogColumns(const RestoreLog& log) {
    Json::Value columns(Json::objectValue);
    columns[Key("LOGID")] = Utf8(log.logId);
    columns[Key("UID")] = Utf8(log.uid);
    columns[Key("RECV_TIME")] = WideToUtf8(LocalTimeText(log.received));
    columns[Key("LOG_TYPE")] = log.logType;
    columns[Key("RESULT")] = log.result;
    return columns;
}

int FormatLogRow(const LogTable& table, Json::Value columns, std::wstring& text) {
    static const Json::StreamWriterBuilder builder = MakeBuilder();
    Json::Value row(Json::objectValue);
    row[Key("TBL")] = table.name;
    row[Key("COL")] = std::move(columns);
    row[Key("VER")] = table.version;
    row[Key("CATEGORY")] = table.category;
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
