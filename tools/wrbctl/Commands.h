// The subcommands of wrbctl. Each prints its result to the standard output, a failure to the standard error, and
// returns the program's exit code.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace wrb {

struct SendOptions {
    std::string command;
    std::vector<std::string> fields;  // after the reply pipe, which wrbctl adds itself
    double timeoutSeconds = 10;       // from the start to the last byte of the answer
    bool raw = false;                 // also a SET command with another number of fields than it has
    bool json = false;
};

int RunSend(const SendOptions& options);

int RunCommands(bool json);

enum class CounterFormat { Table, Json, Prometheus };

struct CountersOptions {
    bool all = false;     // also commands that were never called
    double interval = 0;  // seconds between two reads; 0 reads once
    unsigned times = 0;   // number of reads with an interval; 0: until Ctrl-C
    CounterFormat format = CounterFormat::Table;
};

int RunCounters(const CountersOptions& options);

// Without a level: shows the filter. With one: makes the log service change it.
int RunLogLevel(const std::optional<std::string>& level, double timeoutSeconds, bool json);

struct MakeKeyOptions {
    std::string ini;  // the server INI; empty: Private\wrbserver.ini in the home folder
    bool force = false;
};

// Writes a new protection key into the server INI. One that is there is replaced only with `force`.
int RunMakeKey(const MakeKeyOptions& options);

// Protects the first line of the standard input (UTF-8) with the key of the server INI: for a password in an INI file.
// It is read there so that it shows in no list of processes and in no history of commands.
int RunProtect();

struct PackOptions {
    std::string package;
    std::vector<std::string> files;
};

// Makes a package (a cabinet) of the files, under their names without folders.
int RunPack(const PackOptions& options);

struct FwlogWriteOptions {
    std::string out;
    std::optional<uint32_t> version;  // 0 or 1; without it the first record's, or 1
    std::string in = {};              // a file; empty: the standard input
    uint64_t* records = nullptr;      // gets their number
};

// Makes a firewall log file from JSON lines. No file is left when a line is wrong.
int RunFwlogWrite(const FwlogWriteOptions& options);

struct FwlogReadOptions {
    std::string file;
    bool json = false;  // JSON lines, as RunFwlogWrite takes them
};

int RunFwlogRead(const FwlogReadOptions& options);

}  // namespace wrb
