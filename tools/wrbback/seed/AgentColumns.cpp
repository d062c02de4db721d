#include "AgentColumns.h"

namespace wrb {
namespace {

constexpr AgentColumn kColumns[] = {
    {nullptr, "computer", "computer", true},
    {nullptr, "ip", "ip", true},
    {nullptr, "programVersion", "program_version", true},
    {nullptr, "platform", "platform", false},
    {nullptr, "architecture", "architecture", false},
    {nullptr, "changed", "changed", false},
    {nullptr, "scanMethod", "scan_method", false},
    {nullptr, "behaviourText", "behaviour_text", true},
    {nullptr, "firewallPolicy", "firewall_policy", true},
    {"domain", "name", "domain_name", true},
    {"domain", "path", "domain_path", true},
    {"domain", "uid", "domain_uid", true},
    {"status", "word1", "status1", false},
    {"status", "word2", "status2", false},
    {"privilege", "word1", "privilege1", false},
    {"privilege", "word2", "privilege2", false},
    {"passwords", "uninstall", "uninstall_password", true},
    {"passwords", "unload", "unload_password", true},
    {"outbreakPrevention", "status", "opp_status", false},
    {"outbreakPrevention", "end", "opp_end", false},
};

}  // namespace

std::span<const AgentColumn> AgentColumns() {
    return kColumns;
}

}  // namespace wrb
