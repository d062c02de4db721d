// docs/wire-formats.md as the tests see it.
#pragma once

#include <string>
#include <vector>

namespace wrb::test {

// The bytes of the one block marked ```hex; what follows a | in its lines is for people.
std::string WirePageExample();

// The cells of every table row whose first cell is a command name in backticks, without the backticks.
std::vector<std::vector<std::string>> WirePageCommands();

}  // namespace wrb::test
