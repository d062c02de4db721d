// The commands and the records, held against docs/wire-formats.md.
#include <gmock/gmock.h>

#include <array>
#include <regex>

#include "ChildProcess.h"
#include "DbAllScanRecord.h"
#include "DbBundle.h"
#include "DbCommands.h"
#include "FakeDbService.h"
#include "MsgSerializer.h"
#include "TempFolder.h"
#include "Text.h"

namespace {

const std::string& Page() {
    static const std::string page = wrb::test::ReadAll(wrb::test::ProgramFolder() + L"wire-formats.md");
    return page;
}

// The bytes of the one block marked ```hex; what follows a | in its lines is for people.
std::string PageExample() {
    const std::size_t begin = Page().find("```hex") + 6;
    const std::string block = Page().substr(begin, Page().find("```", begin) - begin);
    std::istringstream digits(std::regex_replace(block, std::regex("\\|.*"), ""));
    std::string bytes;
    for (unsigned byte = 0; digits >> std::hex >> byte;) {
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

TEST(DbCommands, AreThoseOfThePage) {
    static constexpr const char* kShapes[] = {"none", "number", "text", "record", "list", "message"};
    const auto orDash = [](const char* fields) { return std::string(*fields == '\0' ? "-" : fields); };
    for (const wrb::DbCommandRow& command : kDbCommands) {
        const std::string row = "\n| `" + wrb::WideToUtf8(command.name) + "` | " + orDash(command.requestFields) +
                                " | " + kShapes[static_cast<std::size_t>(command.answer)] + " | " +
                                orDash(command.answerFields) + " |\n";
        EXPECT_NE(Page().find(row), std::string::npos) << row;
    }
    const std::regex anyRow("\n\\| `DB");
    EXPECT_EQ(std::distance(std::sregex_iterator(Page().begin(), Page().end(), anyRow), {}), std::ssize(kDbCommands));
}

wrb::ScanGroupValues Scan(const std::array<uint32_t, 12>& n, const wchar_t* extList, const wchar_t* moveDir,
                          const wchar_t* custAction) {
    return {n[0],  n[1],  n[2],    n[3],    n[4], n[5],       n[6], n[7], n[8], n[9],
            n[10], n[11], extList, moveDir, {},   custAction, {},   {},   {},   {}};
}

// What the page's example holds.
wrb::AllScanConfig ExampleCfg() {
    wrb::AllScanConfig cfg;
    cfg.hasConfig = true;
    cfg.hasExtra = true;
    cfg.scans = {
        Scan({0x20000341, 2, 3, 4}, L".EXE", L"\\ms", L"A-1"),
        Scan({0x01000423, 5, 6, 7}, L".COM", L"\\rt", L"CVE_Exploit-1-2"),
        Scan({0x04010805, 8, 9, 10, 1, 12, 30, 0, 28, 7, 4, 3}, L"", L"\\ps", L"C-3"),
        Scan({0x80000181, 11, 12, 0xFFFFFFFF}, L".\u00DC", L"", L"D-4"),
    };
    cfg.spywareFlags = {0x01010101, 0x00040003, 0x03000201, 0x01040301};
    return cfg;
}

wrb::AllScanLists ExampleLists() {
    wrb::AllScanLists lists;
    for (std::size_t scan = 0; scan < lists.scans.size(); ++scan) {
        const std::wstring number = std::to_wstring(scan);
        lists.scans[scan] = {L"folder" + number, L"file" + number, L"ext" + number, L"spy" + number};
    }
    lists.scans[1].excludeFileExtList.clear();
    return lists;
}

template <typename... Fields>
std::string Sequence(const Fields&... fields) {
    CSerializer serializer;
    static_cast<void>((serializer << ... << fields));
    return {reinterpret_cast<const char*>(serializer.Data()), serializer.GetSize()};
}

std::string Encode(const ISerializable& record) {
    return Sequence(record);
}

// Reads the record; returns how many bytes were left.
uint32_t Decode(const std::string& bytes, ISerializable& record) {
    CSerializer serializer;
    serializer.Load(bytes.data(), static_cast<uint32_t>(bytes.size()));
    serializer >> record;
    return serializer.Remaining();
}

TEST(DbAllScanRecord, IsWhatThePageShows) {
    const std::string example = PageExample();
    CMsgSerializer message;
    ASSERT_TRUE(message.Load(example.data(), static_cast<uint32_t>(example.size())));
    EXPECT_EQ(message.Name(), L"DBV2_CLIENT_GET_ALL_SCAN_CFG");
    const std::size_t bodyBytes = message.Remaining();
    wrb::AllScanConfig cfg;
    message >> cfg;
    EXPECT_EQ(message.Remaining(), 0u);
    EXPECT_EQ(Encode(ExampleCfg()), example.substr(example.size() - bodyBytes));
    EXPECT_TRUE(cfg.scans == ExampleCfg().scans);
    EXPECT_EQ(wrb::test::MessageBytes(message.Name(), Encode(cfg)), example);
}

// Texts of length 0 leave their target alone, so a record that is read into twice could keep old texts.
TEST(DbAllScanRecord, ReadingReplacesEveryText) {
    wrb::AllScanLists lists = ExampleLists();
    EXPECT_EQ(Decode(std::string(15 * 4, '\0'), lists), 0u);
    EXPECT_FALSE(lists.HasText());
}

TEST(DbAllScanRecord, ListsComeByScanTypeAndRealTimeHasOneLess) {
    EXPECT_EQ(Encode(ExampleLists()),
              Sequence(L"folder0", L"file0", L"ext0", L"spy0", L"folder1", L"file1", L"ext1", L"folder2", L"file2",
                       L"ext2", L"spy2", L"folder3", L"file3", L"ext3", L"spy3"));
}

TEST(DbRecords, BundlesHaveTheFieldsOfThePage) {
    // clang-format off
    EXPECT_EQ(Encode(tagClientWCSConfig({.flags = 1, .securityLevelIn = 2, .securityLevelOut = 3, .filterFlagIn = 4,
                                         .filterFlagOut = 5, .queryModeIn = 6, .ratingLevelIn = 7, .ratingLevelOut = 8,
                                         .approvedIn = L"ai", .approvedOut = L"ao", .blockedIn = L"bi", .blockedOut = L"bo"})),
              Sequence(1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, L"ai", L"ao", L"bi", L"bo"));
    EXPECT_EQ(Encode(tagClientNCIECfg({.flags = 1, .actionForCNP = 2, .actionForRR = 3, .actionForUserDefine = 4,
                                       .actionForSBA = 5})),
              Sequence(1u, 2u, 3u, 4u, 5u));
    EXPECT_EQ(Encode(tagClientSampleSubmissionCfg({.flags = 1})), Sequence(1u));
    EXPECT_EQ(Encode(tagClientSablexConfig({.flags = 1, .actionForFile = 2, .actionForProcess = 3, .exceptions = L"e",
                                            .processNames = L"p"})),
              Sequence(1u, 2u, 3u, L"e", L"p"));
    EXPECT_EQ(Encode(tagClientAggrScanConfig({.cfg = 1, .detectFlag = 2, .detectFlagForIProduct = 3})), Sequence(1u, 2u, 3u));
    const wrb::FARestoreValues item{.sha1Hash = L"h", .taskId = L"t", .itemId = L"i", .fileDir = L"d", .fileName = L"n"};
    const wrb::PolicyTrackingValues policy{.name = L"n", .lastUpdateTime = L"t", .policyOwner = L"o", .policyTypeId = L"y"};
    // clang-format on
    wrb::BundleContent<wrb::FARestoreValues> items;
    items.items.emplace_back(item);
    items.items.emplace_back();
    wrb::BundleContent<wrb::PolicyTrackingValues> policies;
    policies.items.emplace_back(policy);
    policies.items.emplace_back();
    const std::string two("\2\0\0\0", 4);
    EXPECT_EQ(Encode(items), two + Sequence(L"h", L"t", L"i", L"d", L"n", L"", L"", L"", L"", L""));
    EXPECT_EQ(Encode(policies), two + Sequence(L"n", L"t", L"o", L"y", L"", L"", L"", L""));
}

}  // namespace
