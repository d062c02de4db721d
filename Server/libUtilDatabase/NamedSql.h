// Parameters by name, for engines that count them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace wrb {

// A statement whose every parameter has a name of its own, "p1", "p2", ... in the order in which they stand in it.
struct NumberedSql {
    std::string text;
    std::vector<std::string> names;  // the original names by position, without their sigils; a name may come twice
};

// Parameters are ":name", "@name" and "$name"; the sigil is not part of the name. Texts in quotes stay as they are.
NumberedSql NumberParameters(std::string_view sql);

}  // namespace wrb
