// Cabinets for tests, from memory to memory.
#pragma once

#include <string>
#include <utility>
#include <vector>

// The entries are pairs of name and content. Compressed (MSZIP).
std::string BuildCabinet(const std::vector<std::pair<std::string, std::string>>& entries);
