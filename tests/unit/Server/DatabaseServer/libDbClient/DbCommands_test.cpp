#include "DbCommands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Text.h"
#include "WirePage.h"

namespace {

std::string OrDash(const char* fields) {
    return *fields == '\0' ? "-" : fields;
}

const char* ShapeName(DbAnswer answer) {
    static constexpr const char* kNames[] = {"none", "number", "text", "record", "list", "message"};
    return kNames[static_cast<std::size_t>(answer)];
}

TEST(DbCommands, AreThoseOfThePage) {
    std::vector<std::vector<std::string>> rows;
    for (const tagDbCommand& command : kDbCommands) {
        rows.push_back({wrb::WideToUtf8(command.name), OrDash(command.requestFields), ShapeName(command.answer),
                        OrDash(command.answerFields)});
    }
    EXPECT_THAT(wrb::test::WirePageCommands(), testing::UnorderedElementsAreArray(rows));
}

}  // namespace
