// Whose settings a subcommand is about, as it stands on the command line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "AgentSections.h"
#include "SettingCatalog.h"

namespace wrb {

// Binds the INI caches of the library to the files in the home folder.
void BindIniCaches();

// 0, or the exit code of a failure that has been reported: no back end runs, or the database does not know the agent.
// An empty uid, the server, is always there.
int CheckTarget(const std::wstring& uid);

// 0, or the exit code of a database that does not answer, which has been reported.
int CheckDatabaseServes();

// The agents that the database knows, at most so many. False, reported, when it does not tell.
bool ListAgents(std::vector<std::wstring>& uids, std::size_t most = SIZE_MAX);

// Reports what could not be read, a line for each reason.
int FailUnreadable(const std::wstring& uid, const std::vector<std::wstring>& sections);

// The settings that a command line selects, and what was read of them.
struct Selection {
    std::wstring uid;
    SettingName name;
    std::vector<Explanation> lines;
};

// Reads the selected lines. 0, or the exit code of a failure that has been reported; a name that does not exist is
// reported with the nearest one.
int ReadSelection(Selection& selection);

// The same for the arguments of a subcommand: "UID [SECTION[.KEY]]", with `server` "[SECTION[.KEY]]".
int ReadSelection(const std::vector<std::string>& arguments, bool server, const char* subcommand, Selection& selection);

// False, reported, when there are too few arguments or too many.
bool CheckCount(std::size_t count, std::size_t least, std::size_t most, const char* usage);

}  // namespace wrb
