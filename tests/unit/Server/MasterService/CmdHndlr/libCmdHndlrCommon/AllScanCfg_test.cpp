// All twelve sections of an agent from the combined records.
#include <gtest/gtest.h>

#include "DbAllScanRecord.h"
#include "ExpectedScanSections.h"
#include "RequestLines.h"
#include "cmdhm_ScanCfg.h"

namespace {

using wrb::ScanGroupKind;
using wrb::ScanType;
using wrb::test::ExpectedScanSections;
using wrb::test::tagDbRequest;

constexpr const wchar_t* kUid = L"12345678-1234-1234-1234-123456789abc";
constexpr const wchar_t* kFirst = L"DBV2_CLIENT_GET_ALL_SCAN_CFG";
constexpr const wchar_t* kSecond = L"DBV2_CLIENT_GET_ALL_SCAN_EX";

tagClnAllScanCfg Config(bool hasExtra) {
    tagClnAllScanCfg config;
    config.hasConfig = true;
    config.hasExtra = hasExtra;
    for (uint32_t i = 0; i < kScanTypeCount; ++i) {
        config.scans[i] = wrb::test::DistinctScanValues(0x11111111u << i);
        config.scans[i].moveDir += std::to_wstring(i);
        config.scans[i].custAction = L"Type" + std::to_wstring(i) + L"-1-2";
        config.spywareFlags[i] = 0x01010000u >> i;
    }
    // Only the word of PS has the bit that the exclusion section shows.
    config.scans[2].flags |= 0x10000;
    config.scans[3].flags &= ~0x10000u;
    return config;
}

tagClnAllScanCfgEx Lists() {
    tagClnAllScanCfgEx lists;
    for (uint32_t i = 0; i < kScanTypeCount; ++i) {
        const std::wstring number = std::to_wstring(i);
        lists.scans[i] = {L"folder" + number, L"file" + number, L"ext" + number, i == 1 ? L"" : L"spy" + number};
    }
    return lists;
}

// The reply, from the two records by the rules of the combined answer.
std::wstring ExpectedReply(const tagClnAllScanCfg& config, const tagClnAllScanCfgEx& lists) {
    std::wstring reply;
    for (std::size_t scan = 0; scan < kScanTypeCount; ++scan) {
        for (const std::size_t kind : {0u, 8u, 4u}) {  // main, spyware, exclusion
            const wrb::test::tagExpectedSection& section = ExpectedScanSections()[kind + scan];
            tagScanGroupValues values = config.scans[scan];
            values.cleanFailedMoveDir = values.moveDir;
            values.excludedFolder = lists.scans[scan].excludedFolder;
            values.excludedFile = lists.scans[scan].excludedFile;
            values.excludedExt = lists.scans[scan].excludedExt;
            values.excludeFileExtList = lists.scans[scan].excludeFileExtList;
            if (section.kind == ScanGroupKind::Spyware) {
                values.flags = config.spywareFlags[scan];
            } else if (section.kind == ScanGroupKind::Exclusion && section.type == ScanType::SN) {
                values.flags = config.scans[2].flags;
            }
            reply += section.Text(kUid, values);
        }
    }
    return reply;
}

// Answers the two requests with these bytes; none connect and close.
auto Answering(std::string first, std::string second = {}) {
    return [first = std::move(first), second = std::move(second)](const tagDbRequest& request) {
        return std::optional(request.Name() == kFirst ? first : request.Name() == kSecond ? second : std::string());
    };
}

TEST(AllScanCfg, RepliesWithTwelveSectionsAndClearsEveryBitOnRequest) {
    for (const bool hasExtra : {false, true}) {
        const tagClnAllScanCfg config = Config(hasExtra);
        const tagClnAllScanCfgEx lists = hasExtra ? Lists() : tagClnAllScanCfgEx();
        const wrb::test::CFakeDbService db(Answering(RecordMessage(kFirst, config), RecordMessage(kSecond, Lists())));
        std::wstring out = L"old";
        EXPECT_TRUE(cmdhm_GetAllScanCfg(out, (std::wstring(kUid) + L"more").c_str(), hasExtra));
        EXPECT_EQ(out, ExpectedReply(config, lists));

        const auto requests = db.WaitFor(hasExtra ? 3 : 1);
        ASSERT_EQ(requests.size(), hasExtra ? 3u : 1u);
        EXPECT_EQ(requests[0].Name(), kFirst);
        EXPECT_EQ(requests[0].Texts().at(2), kUid);
        if (hasExtra) {
            EXPECT_EQ(requests[1].Name(), kSecond);
            const std::vector<std::wstring> reset{L"DB_SET_CONF_FLAG", L"-1", kUid, L"0", L"115975", L"0"};
            EXPECT_EQ(requests[2].Fields(), reset);
        }
    }
}

TEST(AllScanCfg, AnythingButWholeAnswersGivesAnEmptyReply) {
    const std::string first = RecordMessage(kFirst, Config(true));
    const std::string second = RecordMessage(kSecond, Lists());
    const std::pair<std::string, std::string> answers[] = {
        {"", second},
        {first, ""},
        {RecordMessage(kFirst, tagClnAllScanCfg()), second},
        {first.substr(0, first.size() - 1), second},
        {first, second.substr(0, second.size() - 1)},
        {wrb::test::WideBytes(L"1\t2"), second},
    };
    for (const auto& [one, two] : answers) {
        const wrb::test::CFakeDbService db(Answering(one, two));
        std::wstring out = L"old";
        EXPECT_FALSE(cmdhm_GetAllScanCfg(out, kUid, true));
        EXPECT_EQ(out, L"");
    }
}

}  // namespace
