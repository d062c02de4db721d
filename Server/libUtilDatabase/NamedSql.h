// SQL texts, taken apart for engines that count parameters and run one statement at a time.
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

// Parameters are ":name", and "@name" and "$name", which become casts to a number of 64 bits. The sigil is not part of
// the name. Texts in quotes stay as they are.
NumberedSql NumberParameters(std::string_view sql);

// The statements between the semicolons, without comments ("-- ..."). No trigger's body.
std::vector<std::string> SplitStatements(std::string_view sql);

}  // namespace wrb
