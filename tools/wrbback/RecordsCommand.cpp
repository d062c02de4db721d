#include "Commands.h"
#include "Console.h"
#include "ExitCode.h"
#include "RecordListing.h"
#include "Store.h"
#include "Text.h"

namespace wrb {
namespace {

void Print(const std::string& utf8) {
    PrintOut(utf8);
}

void ShowTable(SqlDb& db, const RecordTable& table, const ShowOptions& options) {
    (options.json ? ListAsJson : ListAsText)(db, table, {Utf8ToWide(options.uid), options.limit}, Print);
}

}  // namespace

int ShowLogPool(const ShowOptions& options) {
    const auto db = OpenStore(Utf8ToWide(options.database));
    std::string before = options.json ? "{" : "";
    for (const RecordTable* table : {&kCfwLogRecords, &kRestoreLogRecords}) {
        if (options.table.empty() || options.table == table->name) {
            PrintOut(before + (options.json ? "\"" + std::string(table->name) + "\": " : ""));
            ShowTable(*db, *table, options);
            before = options.json ? ", " : "\n";
        }
    }
    PrintOut(options.json ? "}\n" : "");
    return kExitOk;
}

int ShowEvents(const ShowOptions& options) {
    ShowTable(*OpenStore(Utf8ToWide(options.database)), kEventRecords, options);
    PrintOut(options.json ? "\n" : "");
    return kExitOk;
}

}  // namespace wrb
