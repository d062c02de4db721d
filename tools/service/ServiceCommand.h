// The subcommand "service" of a program that can run as a Windows service.
#pragma once

#include <functional>
#include <string>

#include "CommandLine.h"
#include "CrashDump.h"
#include "ServiceSpec.h"

namespace wrb {

class ServiceCommand {
  public:
    // Adds the subcommand. `addOptions` adds the options of the program when it serves: "service install" stores them,
    // "service run", which the service manager calls, takes them.
    ServiceCommand(CLI::App& app, const ServiceSpec& spec, const std::function<void(CLI::App&)>& addOptions);

    bool IsAsked() const { return m_service->parsed(); }

    // What was asked for; `serve` for "service run", `installed` after an installation. Returns the exit code.
    int Run(const std::function<int()>& serve, int (*installed)() = nullptr) const;

  private:
    void AddDump();
    int Install(int (*installed)()) const;
    int Dump() const;

    const ServiceSpec& m_spec;
    CLI::App* m_service;
    CLI::App* m_run;
    CLI::App* m_install;
    CLI::App* m_uninstall;
    CLI::App* m_dump;
    DumpRequest m_request;
    std::string m_dumpFile;
    std::string m_dumpNote;
    std::string m_account;
    bool m_purge = false;
};

}  // namespace wrb
