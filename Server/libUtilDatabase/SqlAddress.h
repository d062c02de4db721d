// What a database is called on a command line.
#pragma once

#include <string>

namespace wrb {

struct SqlAddress {
    bool isOdbc = false;
    std::wstring target;  // the SQLite file, or the ODBC connection string for the driver
    std::string name;     // for messages: the file, or the parts of the connection string that are no secret

    std::string wrong;  // why the address makes no sense; empty: it does

    // By ODBC: how long a log-on, and how long a statement or a commit may take. Keywords of ours in the connection
    // string, LoginTimeout and StatementTimeout, from 1 to 3600.
    unsigned loginSeconds = 10;
    unsigned statementSeconds = 30;
};

// "sqlite:FILE", "odbc:CONNECTION STRING", or a file alone.
SqlAddress ParseSqlAddress(const std::wstring& text);

}  // namespace wrb
