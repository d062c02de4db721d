// The subcommands of the program. Each returns the exit code.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace wrb {

inline constexpr char kDefaultDatabase[] = "agents.db";  // an address, see SqlAddress.h

struct ServeOptions {
    std::string database = kDefaultDatabase;
    unsigned workers = 8;
    unsigned connections = 0;  // 0: two for each processor
    std::string debugIni;
    std::optional<std::string> logFolder;  // this and the next three override the INI file
    std::optional<std::string> logLevel;
    std::optional<uint64_t> splitBytes;
    std::optional<unsigned> maxLogs;
    std::vector<std::string> allowed;  // SIDs and names of the accounts that may connect
    int64_t maxRows = 1'000'000;       // of each record table; 0: all
};

struct ShowOptions {
    std::string database = kDefaultDatabase;
    std::string table;  // empty: all of the log pool
    uint64_t limit = 100;
    bool json = false;
};

int Serve(const ServeOptions& options);
int Seed(const std::string& file, const std::string& database);
int Stop(std::optional<unsigned> timeoutSeconds);
int ShowLogPool(const ShowOptions& options);
int ShowEvents(const ShowOptions& options);
int ShowAgents(const std::string& store, const std::string& filter, bool json);
int Export(const std::string& store);
int Backup(const std::string& store, const std::string& file);
int Check(const std::string& store);

// Prints "wrbback: TEXT" to the standard error and returns the code.
int Fail(const std::string& text, int code);

}  // namespace wrb
