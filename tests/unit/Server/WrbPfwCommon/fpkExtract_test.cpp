#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "CabinetBuilder.h"
#include "PackageFolder.h"
#include "WrbPfwCommon.h"

namespace {

const Bytes kFolder{'<', '>'};
const Bytes kText{'t', 'e', 'x', 't'};

std::vector<tagNewEntry> GoodEntries() {
    return {{"empty.log", {}}, {"sub\\text.log", kText}, {"noise.dat", Noise(100000)}, {"sub\\deep\\text.log", kText}};
}

// What a callback was told, and what it answers.
struct tagTrace {
    std::vector<std::string> events;
    std::string leaveOut;
};

bool Record(const char* entry, const char* directory, unsigned event, void* context) {
    auto& trace = *static_cast<tagTrace*>(context);
    trace.events.push_back(std::to_string(event) + " " + entry);
    if (event == FPK_ENTRY_WRITTEN) {
        EXPECT_TRUE(std::filesystem::exists(std::string(directory) + "\\" + entry));
    }
    return trace.leaveOut != entry;
}

TEST(FpkExtract, UnpacksWhatTheCallbackAdmitsAndThenReportsIt) {
    CPackageFolder folder;
    std::vector<tagNewEntry> entries = GoodEntries();
    entries.insert(entries.begin() + 2, {"left out", Noise(40000)});
    folder.WritePackage(BuildCabinet(entries));
    tagTrace trace;
    trace.leaveOut = "left out";
    ASSERT_TRUE(fpkExtract(folder.Package().c_str(), folder.Target().c_str(), Record, &trace));
    const std::map<std::string, Bytes> expected{{"empty.log", {}},        {"sub", kFolder},
                                                {"sub\\text.log", kText}, {"noise.dat", Noise(100000)},
                                                {"sub\\deep", kFolder},   {"sub\\deep\\text.log", kText}};
    EXPECT_EQ(folder.Files(), expected);
    const std::vector<std::string> events{"1 empty.log",     "1 sub\\text.log",       "1 left out",
                                          "1 noise.dat",     "1 sub\\deep\\text.log", "2 empty.log",
                                          "2 sub\\text.log", "2 noise.dat",           "2 sub\\deep\\text.log"};
    EXPECT_EQ(trace.events, events);
}

TEST(FpkExtract, WritesIntoFoldersThatAreThereButOverNoFile) {
    CPackageFolder folder;
    const std::filesystem::path target(folder.Target());
    std::filesystem::create_directory(target / "sub");
    std::ofstream(target / "sub" / "old") << "old";
    folder.WritePackage(BuildCabinet({{"sub\\new", kText}, {"other\\new", kText}, {"SUB\\OLD", kText}}));
    EXPECT_FALSE(fpkExtract(folder.Package().c_str(), folder.Target().c_str(), nullptr, nullptr));
    EXPECT_EQ(folder.Files(), (std::map<std::string, Bytes>{{"sub", kFolder}, {"sub\\old", {'o', 'l', 'd'}}}));

    folder.WritePackage(BuildCabinet({{"sub\\new", kText}}));
    EXPECT_TRUE(fpkExtract(folder.Package().c_str(), folder.Target().c_str(), nullptr, nullptr));
    EXPECT_EQ(folder.Files().size(), 3u);
    folder.WritePackage(BuildCabinet({{"sub\\old\\below", kText}}));
    EXPECT_FALSE(fpkExtract(folder.Package().c_str(), folder.Target().c_str(), nullptr, nullptr))
        << "a file on the way";
}

TEST(FpkExtract, ThreadsUnpackSideBySide) {
    const Bytes cabinet = BuildCabinet(GoodEntries());
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&cabinet] {
            for (int round = 0; round < 5; ++round) {
                CPackageFolder folder;
                folder.WritePackage(cabinet);
                EXPECT_TRUE(fpkExtract(folder.Package().c_str(), folder.Target().c_str(), nullptr, nullptr));
                EXPECT_EQ(folder.Files().size(), 6u);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace
