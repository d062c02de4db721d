#include "Version.h"

#include "Commit.h"

namespace wrb {

std::string Version() {
    return WRB_VERSION;
}

std::string VersionText(std::string_view program) {
    return std::string(program) + " " + WRB_VERSION + " (commit " + kCommit + ")";
}

}  // namespace wrb
