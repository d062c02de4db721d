#include "AgentLoad.h"

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <string>

namespace wrb {
namespace {

std::string ErrorOf(const char* text) try {
    ParseLoadMix(text);
    return "";
} catch (const std::invalid_argument& error) {
    return error.what();
}

TEST(LoadMix, LinesAreEntriesAndMistakesNameTheirLine) {
    const LoadMix mix = ParseLoadMix("# day\r\n\r\n  2 CMDHL_ECHO \"a b\" \"\"\r\n3\tCMDHL_SET_STATFLAG UID 1");
    ASSERT_EQ(mix.size(), 2u);
    EXPECT_TRUE(mix[0].weight == 2 && mix[0].answers && mix[1].weight == 3 && !mix[1].answers);
    EXPECT_EQ(mix[0].fields, (std::vector<std::wstring>{L"a b", L""}));
    EXPECT_EQ(mix[1].fields, (std::vector<std::wstring>{kMixUid, L"1"}));
    std::string tooMany;
    for (int i = 0; i <= 1000; ++i) {
        tooMany += "1000000 CMDHL_ECHO x\n";
    }
    const std::pair<const char*, const char*> kRows[] = {
        {tooMany.c_str(), "line 1001: more than 1000 commands"},
        {"", "no line names a command"},
        {"1 CMDHL_ECHO x\n0 CMDHL_ECHO x", "line 2: \"0\" is no weight from 1 to 1000000"},
        {"1x CMDHL_ECHO", "line 1: \"1x\" is no weight from 1 to 1000000"},
        {"1000001 CMDHL_ECHO", "line 1: \"1000001\" is no weight from 1 to 1000000"},
        {"1", "line 1: no such command; 'wrbctl commands' lists them"},
        {"#\n1 CMDHL_ECO x", "line 2: no such command; 'wrbctl commands' lists them"},
    };
    for (const auto& [text, error] : kRows) {
        EXPECT_EQ(ErrorOf(text), error) << text;
    }
}

// No host runs here: every command is an error, and each entry has its share of them.
TEST(AgentLoad, KeepsItsRateAndItsMixAndCountsWhatTheHostDoesNotTake) {
    AgentLoad load({.agents = {L"one", L"two"},
                    .mix = ParseLoadMix("1 CMDHL_ECHO x\n3 CMDHL_SET_STATFLAG UID 1 2"),
                    .seconds = 0.2,
                    .perSecond = 2000});
    load.Wait();
    EXPECT_TRUE(load.IsOver());
    EXPECT_EQ(load.Commands(), 400u);
    EXPECT_EQ(load.Errors(), 400u);
    EXPECT_NEAR(static_cast<double>(load.Tally(0).undelivered), 100, 2);
}

}  // namespace
}  // namespace wrb
