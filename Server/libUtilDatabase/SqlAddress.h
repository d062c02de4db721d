// What a database is called on a command line.
#pragma once

#include <string>

namespace wrb {

struct SqlAddress {
    bool isOdbc = false;
    std::wstring target;  // the SQLite file, or the ODBC connection string
    std::string name;     // for messages: the file, or the parts of the connection string that are no secret
};

// "sqlite:FILE", "odbc:CONNECTION STRING", or a file alone.
SqlAddress ParseSqlAddress(const std::wstring& text);

}  // namespace wrb
