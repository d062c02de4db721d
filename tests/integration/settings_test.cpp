// The catalogue of settings against the command library: explained, changed and read back, for every key.
#include <algorithm>
#include <iterator>

#include "AgentSections.h"
#include "Ask.h"
#include "BackEnd.h"
#include "ScanChanges.h"
#include "ServerHome.h"
#include "SettingValue.h"

namespace wrb::test {
namespace {

constexpr const wchar_t* kCommands[] = {L"MS_CFG", L"SPY_MS_CFG", L"MS_CFG_EX", L"RT_CFG", L"SPY_RT_CFG", L"RT_CFG_EX",
                                        L"PS_CFG", L"SPY_PS_CFG", L"PS_CFG_EX", L"SN_CFG", L"SPY_SN_CFG", L"SN_CFG_EX"};

// In the place of the sample agents' uids.
constexpr const wchar_t* kAgents[] = {kFullAgent, L"8d94e7b5-20c1-4f8a-8e3d-57a1f09c6b42", L""};

std::wstring Fetch(const ScanGroup& group, const std::wstring& uid) {
    return Ask((L"CMDHL_GET_" + std::wstring(kCommands[ScanGroupIndex(group.type, group.kind)])).c_str(), uid);
}

std::wstring TextOf(const std::vector<Explanation>& lines) {
    std::wstring text;
    const std::wstring* section = nullptr;
    for (const Explanation& line : lines) {
        if (section == nullptr || *section != line.section) {
            text += L"[" + line.section + L"]\n";
        }
        section = &line.section;
        text += line.key + L"=" + line.value + L"\n";
    }
    return text;
}

class Settings : public testing::Test {
  protected:
    void SetUp() override {
        m_home.Write(L"wrbscan.ini",
                     "[Manual Scan Configuration]\r\nScanBoot=0\r\n[INI_MAJOR_VIRUS_TYPE_SECTION]\r\nCount=1\r\n"
                     "Name_000=Joke\r\n1st_Act_000=3\r\n[Global Setting]\r\nAny=thing\r\n");
        m_home.Write(L"Private\\wrbserver.ini",
                     "[INI_SERVER_SECTION]\r\nStringProtectionKey=" + std::string(64, 'a') + "\r\n");
        cmdhl_Initialize(L"", L"", nullptr);
    }
    void TearDown() override { cmdhl_Finalize(); }

    ServerHome m_home;
    BackEnd m_backEnd;
};

TEST_F(Settings, EveryKeyOfEveryGroupIsExplainedAsItIsAnswered) {
    for (const std::wstring uid : kAgents) {
        for (const ScanGroup& group : kScanGroups) {
            const AgentExplanation explained = ExplainAgent(uid, std::wstring(group.name));
            EXPECT_EQ(TextOf(explained.lines), Fetch(group, uid));
            for (const Explanation& line : explained.lines) {
                const SettingInfo* const setting = FindSetting(group, line.key);
                if (line.word && setting->kind == SettingKind::Switch) {
                    EXPECT_EQ(line.value == L"1", (*line.word & line.mask) != 0) << WideToUtf8(line.key);
                }
            }
        }
    }
    const auto sourceOf = [](const wchar_t* uid, const wchar_t* section, const wchar_t* key) {
        const auto lines = ExplainAgent(uid, section).lines;
        const auto line = std::ranges::find(lines, key, &Explanation::key);
        return line == lines.end() ? "missing" : NameOf(line->source);
    };
    EXPECT_STREQ(sourceOf(L"", L"MSCfg", L"ScanBoot"), "scan INI");
    EXPECT_STREQ(sourceOf(L"", L"MSCfg", L"ScanMemory"), "default");
    EXPECT_STREQ(sourceOf(kFullAgent, L"mscfg", L"CustAction"), "completed text");
    EXPECT_STREQ(sourceOf(kFullAgent, L"SAMPLE_SUBMISSION", L"EnableSampleSubmission"), "database bit");
    EXPECT_STREQ(sourceOf(kFullAgent, L"ini_critical_section", L"AllowCfg"), "database bit");
    EXPECT_STREQ(sourceOf(kFullAgent, L"Global Setting", L"Any"), "scan INI");
}

// The answer for all settings has the same sections; its keys of scan now's exclusions and its protected texts differ.
TEST_F(Settings, EverySectionOfAnAgentIsExplained) {
    const AgentExplanation explained = ExplainAgent(kFullAgent);
    EXPECT_EQ(explained.unreadable, std::vector<std::wstring>());
    const std::vector<IniLine> answered = SplitSections(Ask(L"CMDHL_GET_CLIENT_ALL_SETTING", kFullAgent));
    ASSERT_EQ(explained.lines.size(), answered.size());
    for (std::size_t i = 0; i < answered.size(); ++i) {
        EXPECT_EQ(explained.lines[i].section + L"." + explained.lines[i].key,
                  answered[i].section + L"." + answered[i].key);
    }
    for (const ScanGroup& group : kScanGroups) {  // which are read together here
        std::vector<Explanation> lines;
        std::ranges::copy_if(explained.lines, std::back_inserter(lines),
                             [&](const Explanation& line) { return line.section == group.section; });
        EXPECT_EQ(TextOf(lines), Fetch(group, kFullAgent));
    }
    EXPECT_FALSE(ExplainAgent(kUnknownAgent).unreadable.empty());
}

// Each key that can be set is set alone: it changes, and nothing else of its section.
TEST_F(Settings, EveryKeyIsSetAlone) {
    for (const std::wstring& uid : {std::wstring(kFullAgent), std::wstring()}) {
        for (const SettingInfo& setting : SettingCatalog()) {
            ASSERT_NE(setting.help, nullptr) << WideToUtf8(setting.Key());
            ScanGroupValues values;
            if (!setting.IsSetFor(!uid.empty())) {
                EXPECT_NE(SetSetting(setting, L"1", !uid.empty(), values), "");
                continue;
            }
            EXPECT_EQ(SetSetting(setting, setting.Default(), !uid.empty(), values), "") << WideToUtf8(setting.Key());
            std::vector<IniLine> before = SplitSections(Fetch(*setting.group, uid));
            const auto line = std::ranges::find(before, setting.Key(), &IniLine::key);
            ASSERT_NE(line, before.end());
            const std::vector<uint32_t> choices = setting.Choices();
            line->value = setting.kind == SettingKind::Text            ? L"Joke-1"
                          : choices.empty()                            ? L"2"
                          : line->value == std::to_wstring(choices[0]) ? std::to_wstring(choices[1])
                                                                       : std::to_wstring(choices[0]);
            const SettingAssignment assignment{&setting, line->value};
            const MergedChanges merged = MergeChanges({&assignment, 1}, uid);
            ASSERT_TRUE(merged.faults.empty() && merged.unreadable == nullptr && merged.groups.size() <= 1);
            if (!merged.groups.empty()) {
                ASSERT_TRUE(StoreChange(merged.groups[0], uid));
                while (!IsStored(merged.groups[0], uid)) {
                    Sleep(1);
                }
            }
            const std::vector<IniLine> after = SplitSections(Fetch(*setting.group, uid));
            for (std::size_t i = 0; i < after.size(); ++i) {
                const bool isMoveDir =
                    setting.Key() == L"MoveDir" && !uid.empty() && after[i].key == L"CleanFailedMoveDir";
                EXPECT_EQ(after[i].value, isMoveDir ? L"Joke-1" : before[i].value) << WideToUtf8(after[i].key);
            }
        }
    }
}

TEST(SettingChanges, WhatIsWrongIsNamedWithTheNearestName) {
    const std::pair<const wchar_t*, const char*> kRows[] = {
        {L"MSCfg.ScanBoot", "\"MSCfg.ScanBoot\" is not SECTION.KEY=VALUE"},
        {L"MSCfg=1", "\"MSCfg=1\" is not SECTION.KEY=VALUE"},
        {L"MSCgf.ScanBoot=1", "no section \"MSCgf\"; did you mean \"MSCfg\"?"},
        {L"nothing like it.ScanBoot=1", "no section \"nothing like it\""},
        {L"Manual Scan Configuration.ScanBot=1",
         "[Manual Scan Configuration] has no key \"ScanBot\"; did you mean \"ScanBoot\"?"},
        {L"mscfg.scanboot=a.b=c", ""},
    };
    for (const auto& [text, expected] : kRows) {
        std::string wrong;
        const auto assignment = ParseAssignment(text, wrong);
        EXPECT_EQ(wrong, expected);
        EXPECT_EQ(assignment.has_value(), wrong.empty());
    }
    const struct {
        const wchar_t* key;
        const wchar_t* value;
        bool agent;
        const char* wrong;
    } kValues[] = {
        {L"PSCfg.Hour", L"24", true, "must be 0 to 23"},
        {L"PSCfg.Hour", L"", true, "must be 0 to 23"},
        {L"PSCfg.Hour", L"7x", true, "must be 0 to 23"},
        {L"MSCfg.OleLayer", L"-1", true, "must be 0 to 255 layers"},
        {L"MSCfg.ScanBoot", L"true", true, "must be 0 or 1"},
        {L"SpyRTCfg.ActionType", L"3", true, "must be 0, 1 or 2"},
        {L"MSCfg.ExtList", L"a\tb", true, "has a control character"},
        {L"MSCfg.ExtList", L" a", true, ""},
        {L"MSCfg.ExtList", L" a", false,
         "does not survive an INI file: it has blanks or quotes around it, or "
         "characters that the system's code page lacks"},
        {L"MSCfg.UID", L"a", true, "cannot be set"},
        {L"MSCfg.CleanFailedMoveDir", L"a", true, "is MoveDir for an agent; set that"},
    };
    for (const auto& row : kValues) {
        const SettingName name = ParseSettingName(row.key);
        const SettingInfo* const setting = FindSetting(*FindScanSection(name.section), name.key);
        ASSERT_NE(setting, nullptr);
        ScanGroupValues values;
        EXPECT_EQ(SetSetting(*setting, row.value, row.agent, values), row.wrong) << WideToUtf8(row.key);
    }
}

}  // namespace
}  // namespace wrb::test
