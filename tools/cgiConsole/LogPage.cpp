#include <algorithm>

#include "Audit.h"
#include "HomeFolder.h"
#include "INICache.h"
#include "IniValues.h"
#include "LogLevel.h"
#include "LogTail.h"
#include "Pages.h"
#include "ServedPipe.h"
#include "ServicePipes.h"

namespace wrb {
namespace {

constexpr std::size_t kLines = 200;
constexpr double kLevelSeconds = 5;

std::wstring LogFolder() {
    std::wstring folder = ReadIniText(ServerIniCache(), L"Console", L"LogFolder", L"");
    return folder.empty() ? HomeFolder() + L"Log" : folder;
}

std::string LevelName(uint32_t word) {
    const LogLevelRow* const row = LogLevelOfWord(word);
    return row == nullptr ? "a threshold of its own" : std::string(row->level);
}

// The page's filter: a class, or empty for every line.
std::string FilterOf(const Request& request) {
    const std::string filter = WideToUtf8(request.Text(L"level"));
    return filter.size() == 1 && FindLogLevel(filter) != nullptr ? filter : std::string();
}

Data LevelOptions(std::string_view selected) {
    Data options = ListData();
    for (const LogLevelRow& row : LogLevels()) {
        Data option;
        option["value"] = std::string(row.level);
        option["meaning"] = std::string(row.meaning);
        option["isClass"] = row.level.size() == 1;
        option["selected"] = row.level == selected;
        options.push_back(option);
    }
    return options;
}

Data LinesData(const LogTail& tail) {
    Data lines = ListData();
    for (const LogTailLine& line : tail.lines) {
        Data row;
        row["time"] = line.time;
        row["process"] = line.process;
        row["level"] = line.level;
        row["bad"] = line.level == "E" || line.level == "F";
        row["warn"] = line.level == "W";
        row["text"] = line.text;
        lines.push_back(row);
    }
    return lines;
}

}  // namespace

View ShowLog(const Request& request) {
    const std::string filter = FilterOf(request);
    const std::wstring folder = LogFolder();
    const LogTail tail = ReadLogTail(folder, filter, kLines);
    View view;
    if (request.Has(L"stored")) {
        view.note = L"The log level is " + Utf8ToWide(LevelName(CurrentLogWord())) + L" now, for every process.";
    }
    view.data["filters"] = LevelOptions(filter);
    view.data["lines"] = LinesData(tail);
    view.data["any"] = !tail.lines.empty();
    view.data["readable"] = tail.isReadable;
    view.data["folder"] = TextData(folder);
    view.data["runs"] = IsServed(kLogServicePipe);
    view.data["current"] = LevelName(CurrentLogWord());
    view.data["levels"] = LevelOptions(LevelName(CurrentLogWord()));
    return view;
}

View ChangeLog(const Request& request) {
    const LogLevelRow* const row = FindLogLevel(WideToUtf8(request.Text(L"to")));
    const std::string before = LevelName(CurrentLogWord());
    View view = ShowLog(request);
    view.kind = NoteKind::Bad;
    if (row == nullptr) {
        view.status = "400 Bad Request";
        view.note = L"There is no such log level.";
    } else if (!IsServed(kLogServicePipe) || ChangeLogLevel(*row, kLevelSeconds) != LogLevelChange::Done) {
        view.status = "503 Service Unavailable";
        view.note = L"The log service did not change the level. Start wrbback serve.";
    } else {
        AddAudit(request, L"log", {{L"level", Utf8ToWide(before), Utf8ToWide(row->level)}});
        view.location = L"?page=log&stored=1";
    }
    return view;
}

}  // namespace wrb
