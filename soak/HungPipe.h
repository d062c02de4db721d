// Neighbours that keep others from a service's pipe.
#pragma once

#include <string>
#include <vector>

#include "Handle.h"

namespace wrb::soak {

// Owns the pipe's name in place of its service: clients can connect and write, and nobody reads.
class HungPipe {
  public:
    explicit HungPipe(const wchar_t* name);  // throws std::runtime_error when the name is taken

  private:
    std::vector<FileHandle> m_instances;
};

// Holds the connections of the service that owns the pipe, and writes nothing. A connection that the service gives to
// somebody else is taken at the next call.
class SilentClients {
  public:
    explicit SilentClients(const wchar_t* name);

    void TakeFreeConnections();

  private:
    const std::wstring m_path;
    std::vector<FileHandle> m_connections;
};

}  // namespace wrb::soak
