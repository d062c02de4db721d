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

TEST(DbCommands, AreFoundByTheirExactName) {
    for (const tagDbCommand& command : kDbCommands) {
        EXPECT_EQ(wrb::FindDbCommand(command.name), command.id);
        EXPECT_EQ(&wrb::DescribeDbCommand(command.id), &command);
    }
    for (const wchar_t* name : {L"", L"DB_GET_STATU", L"DB_GET_STATUS2", L"db_get_status"}) {
        EXPECT_FALSE(wrb::FindDbCommand(name));
    }
}

}  // namespace
