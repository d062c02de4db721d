#include "ServiceCommand.h"

#include <algorithm>

#include "ExitCode.h"
#include "ServiceManager.h"
#include "ServiceProcess.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr struct {
    const char* name;
    const char* help;
    int (*run)(const ServiceSpec& spec);
} kActions[] = {
    {"start", "Start the service, and wait until it serves", StartService},
    {"stop", "Stop the service, and wait until it has finished", StopService},
    {"status", "Show state, account and command line", ShowService},
};

// The arguments after "install" but for --account and its value.
std::vector<std::wstring> ServeArguments() {
    const std::vector<std::string> arguments = Utf8Arguments();
    std::vector<std::wstring> kept;
    for (auto next = std::ranges::find(arguments, "install"); next != arguments.end() && ++next != arguments.end();) {
        if (*next == "--account") {
            ++next;
        } else if (!next->starts_with("--account=")) {
            kept.push_back(Utf8ToWide(*next));
        }
    }
    return kept;
}

}  // namespace

ServiceCommand::ServiceCommand(CLI::App& app, const ServiceSpec& spec, const std::function<void(CLI::App&)>& addOptions)
    : m_spec(spec), m_service(app.add_subcommand("service", "Install, remove and run as a Windows service")) {
    m_service->require_subcommand(1);
    m_install = m_service->add_subcommand("install", "Install the service, or change the one that is there");
    m_install->add_option("--account", m_account,
                          "Account of the service (default: as it is, else NT AUTHORITY\\LocalService)");
    m_run = m_service->add_subcommand("run", "What the service manager calls");
    for (CLI::App* command : {m_install, m_run}) {
        addOptions(*command);
    }
    m_uninstall = m_service->add_subcommand("uninstall", "Stop and delete the service");
    m_uninstall->add_flag("--purge", m_purge, "Also delete its settings, data and logs, which stay otherwise");
    for (const auto& action : kActions) {
        m_service->add_subcommand(action.name, action.help);
    }
    AddDump();
    m_service->footer(
        "Options of install that are left out stay as they are. Relative paths start at the home folder.\n"
        "\n"
        "Exit codes: 0 done, 1 failed, 2 wrong command line, 3 not running or not installed, 4 timed out");
}

// For this program alone, see CrashDump.h.
void ServiceCommand::AddDump() {
    m_dump = m_service->add_subcommand("dump")->group("");
    m_dump->add_option("process", m_request.process)->required();
    m_dump->add_option("thread", m_request.thread)->required();
    m_dump->add_option("pointers", m_request.pointers)->required();
    m_dump->add_option("file", m_dumpFile)->required();
    m_dump->add_option("note", m_dumpNote);
}

int ServiceCommand::Dump() const {
    DumpRequest request = m_request;
    request.file = Utf8ToWide(m_dumpFile);
    request.note = Utf8ToWide(m_dumpNote);
    return WriteDump(request);
}

int ServiceCommand::Install(int (*installed)()) const {
    const int code = InstallService(m_spec, {Utf8ToWide(m_account), ServeArguments()});
    return code == kExitOk && installed != nullptr ? installed() : code;
}

int ServiceCommand::Run(const std::function<int()>& serve, int (*installed)()) const {
    if (m_install->parsed()) {
        return Install(installed);
    }
    if (m_dump->parsed()) {
        return Dump();
    }
    if (m_run->parsed()) {
        return RunAsService(m_spec, serve);
    }
    if (m_uninstall->parsed()) {
        return UninstallService(m_spec, m_purge);
    }
    const auto* const action =
        std::ranges::find_if(kActions, [this](const auto& row) { return m_service->got_subcommand(row.name); });
    return action->run(m_spec);
}

}  // namespace wrb
