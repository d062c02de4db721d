// The subcommands of the program. Each returns the exit code; a database that fails throws SqlError, which the program
// reports at its end.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace wrb {

inline constexpr char kDefaultDatabase[] = "agents.db";  // an address, see SqlAddress.h

struct ServeOptions {
    std::string database;
    unsigned workers = 8;      // beside those that the database holds
    unsigned connections = 0;  // 0: two for each processor
    std::string debugIni;
    std::optional<std::string> logFolder;  // this and the next three override the INI file
    std::optional<std::string> logLevel;
    std::optional<uint64_t> splitBytes;
    std::optional<unsigned> maxLogs;
    std::vector<std::string> allowed;  // SIDs and names of the accounts that may connect
    int64_t maxRows = 1'000'000;       // of each record table; 0: all
    bool allowFaults = false;
    std::vector<std::string> faults;  // FaultRule.h; only with allowFaults
};

struct ShowOptions {
    std::string database;
    std::string table;  // empty: all of the log pool
    std::string uid;    // rows of this agent only; empty: of all
    uint64_t limit = 100;
    bool json = false;
};

// The store of the option; else of the variable WRB_STORE; else that of a service. Throws std::invalid_argument for one
// that SQLite would keep in memory.
std::string StoreOf(const std::string& option);

// The store of the key BackEndStore in Private\\wrbserver.ini, whose relative file lies in the home folder; else
// agents.db in the current folder.
std::string StoreOfService();

// For a service that has been installed: names its store in that file, where none is named, and makes it.
int SettleServiceStore();

int Serve(const ServeOptions& options);
int Seed(const std::string& file, const std::string& database);
int Stop(std::optional<unsigned> timeoutSeconds);
int ShowLogPool(const ShowOptions& options);
int ShowEvents(const ShowOptions& options);
int ShowAgents(const std::string& store, const std::string& filter, bool json);
int Export(const std::string& store);
int Backup(const std::string& store, const std::string& file);
int Check(const std::string& store);

// Throws std::invalid_argument when SQLite would take the name for a database in memory, which ends with the program,
// or would cut it.
void RequireFileName(const std::wstring& name);

// Prints "wrbback: TEXT" to the standard error and returns the code.
int Fail(const std::string& text, int code);

}  // namespace wrb
