#include <gtest/gtest.h>

#include <vector>

#include "CabinetBuilder.h"
#include "OnThreads.h"
#include "PackageFolder.h"
#include "WrbPfwCommon.h"

namespace {

const Bytes kFolder{'<', '>'};
const Bytes kText{'t', 'e', 'x', 't'};

std::vector<tagNewEntry> GoodEntries() {
    return {{"empty.log", {}}, {"sub\\text.log", kText}, {"noise.dat", Noise(100000)}, {"sub\\deep\\text.log", kText}};
}

// Leaves one entry out and tells the events in the test's list.
bool Record(const char* entry, const char* directory, unsigned event, void* context) {
    *static_cast<std::string*>(context) += std::to_string(event) + " " + entry + "\n";
    EXPECT_TRUE(event != FPK_ENTRY_WRITTEN || std::filesystem::exists(std::string(directory) + "\\" + entry));
    return std::string_view(entry) != "left out";
}

TEST(FpkExtract, UnpacksWhatTheCallbackAdmitsAndThenReportsIt) {
    CPackageFolder folder;
    std::vector<tagNewEntry> entries = GoodEntries();
    entries.insert(entries.begin() + 2, {"left out", Noise(40000)});
    folder.WritePackage(BuildCabinet(entries));
    std::string events;
    ASSERT_TRUE(fpkExtract(folder.Package().c_str(), folder.Target().c_str(), Record, &events));
    const std::map<std::string, Bytes> expected{{"empty.log", {}},        {"sub", kFolder},
                                                {"sub\\text.log", kText}, {"noise.dat", Noise(100000)},
                                                {"sub\\deep", kFolder},   {"sub\\deep\\text.log", kText}};
    EXPECT_EQ(folder.Files(), expected);
    EXPECT_EQ(events,
              "1 empty.log\n1 sub\\text.log\n1 left out\n1 noise.dat\n1 sub\\deep\\text.log\n"
              "2 empty.log\n2 sub\\text.log\n2 noise.dat\n2 sub\\deep\\text.log\n");
}

TEST(FpkExtract, WritesIntoFoldersThatAreThereButOverNoFile) {
    CPackageFolder folder;
    const std::filesystem::path target(folder.Target());
    std::filesystem::create_directory(target / "sub");
    wrb::test::WriteAll(target / "sub" / "old", "old");
    const std::map<std::string, Bytes> before = folder.Files();
    for (const char* name : {"SUB\\OLD", "sub\\old\\below"}) {
        folder.WritePackage(BuildCabinet({{"sub\\new", kText}, {"other\\new", kText}, {name, kText}}));
        EXPECT_FALSE(fpkExtract(folder.Package().c_str(), folder.Target().c_str(), nullptr, nullptr)) << name;
        EXPECT_EQ(folder.Files(), before);
    }
    folder.WritePackage(BuildCabinet({{"sub\\new", kText}}));
    EXPECT_TRUE(fpkExtract(folder.Package().c_str(), folder.Target().c_str(), nullptr, nullptr));
    EXPECT_EQ(folder.Files().size(), 3u);
}

TEST(FpkExtract, ThreadsUnpackSideBySide) {
    const Bytes cabinet = BuildCabinet(GoodEntries());
    wrb::test::OnThreads(8, [&](unsigned) {
        for (int round = 0; round < 5; ++round) {
            CPackageFolder folder;
            folder.WritePackage(cabinet);
            EXPECT_TRUE(fpkExtract(folder.Package().c_str(), folder.Target().c_str(), nullptr, nullptr));
            EXPECT_EQ(folder.Files().size(), 6u);
        }
    });
}

}  // namespace
