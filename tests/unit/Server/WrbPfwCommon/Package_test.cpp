#include <gtest/gtest.h>

#include <cstring>

#include "CabinetBuilder.h"
#include "DiskReserve.h"
#include "EntryName.h"
#include "FakePipeService.h"
#include "OnThreads.h"
#include "TempFolder.h"
#include "Text.h"
#include "WrbPfwCommon.h"

namespace {

using namespace std::string_literals;

// A package beside an empty target folder, both gone after the test.
class PackageFolder {
  public:
    PackageFolder() { std::filesystem::create_directory(m_root / L"target"); }

    std::string Target() const { return (m_root / L"target").string(); }

    bool Extract(const std::string& package, fpkCallback callback = nullptr, void* context = nullptr) const {
        wrb::test::WriteAll(Package(), package);
        return fpkExtract(Package().c_str(), Target().c_str(), callback, context);
    }

    // Everything under the root but the package: path relative to the target, and content ("<>" for a folder).
    std::map<std::string, std::string> Files() const {
        std::map<std::string, std::string> files;
        for (const auto& item : std::filesystem::recursive_directory_iterator(m_root.Path())) {
            if (item.path() != Package() && item.path() != Target()) {
                const std::string name = item.path().lexically_relative(Target()).string();
                files[name] = item.is_directory() ? "<>" : wrb::test::ReadAll(item);
            }
        }
        return files;
    }

  private:
    std::string Package() const { return (m_root / L"package.cab").string(); }

    wrb::test::TempFolder m_root;
};

using Entries = std::vector<std::pair<std::string, std::string>>;

// Does not compress.
const std::string kNoise = wrb::test::PatternBytes(100'000);

Entries GoodEntries() {
    return {{"empty.log", ""}, {"sub\\text.log", "text"}, {"noise.dat", kNoise}, {"sub\\deep\\text.log", "text"}};
}

// Leaves one entry out and tells the events in the test's list.
bool Record(const char* entry, const char* directory, unsigned event, void* context) {
    *static_cast<std::string*>(context) += std::to_string(event) + " " + entry + "\n";
    EXPECT_TRUE(event != FPK_ENTRY_WRITTEN || std::filesystem::exists(std::string(directory) + "\\" + entry));
    return std::string_view(entry) != "left out";
}

TEST(FpkExtract, UnpacksWhatTheCallbackAdmitsAndThenReportsIt) {
    PackageFolder folder;
    Entries entries = GoodEntries();
    entries.insert(entries.begin() + 2, {"left out", kNoise});
    std::string events;
    ASSERT_TRUE(folder.Extract(BuildCabinet(entries), Record, &events));
    const std::map<std::string, std::string> expected{{"empty.log", ""},         {"sub", "<>"},
                                                      {"sub\\text.log", "text"}, {"noise.dat", kNoise},
                                                      {"sub\\deep", "<>"},       {"sub\\deep\\text.log", "text"}};
    EXPECT_EQ(folder.Files(), expected);
    EXPECT_EQ(events,
              "1 empty.log\n1 sub\\text.log\n1 left out\n1 noise.dat\n1 sub\\deep\\text.log\n"
              "2 empty.log\n2 sub\\text.log\n2 noise.dat\n2 sub\\deep\\text.log\n");
}

TEST(FpkExtract, WritesIntoFoldersThatAreThereButOverNoFile) {
    PackageFolder folder;
    const std::filesystem::path target(folder.Target());
    std::filesystem::create_directory(target / "sub");
    wrb::test::WriteAll(target / "sub" / "old", "old");
    const std::map<std::string, std::string> before = folder.Files();
    for (const char* name : {"SUB\\OLD", "sub\\old\\below"}) {
        EXPECT_FALSE(folder.Extract(BuildCabinet({{"sub\\new", "text"}, {"other\\new", "text"}, {name, "text"}})))
            << name;
        EXPECT_EQ(folder.Files(), before);
    }
    EXPECT_TRUE(folder.Extract(BuildCabinet({{"sub\\new", "text"}})));
    EXPECT_EQ(folder.Files().size(), 3u);
}

TEST(FpkExtract, ThreadsUnpackSideBySide) {
    const std::string cabinet = BuildCabinet(GoodEntries());
    wrb::test::OnThreads(8, [&](unsigned) {
        for (int round = 0; round < 5; ++round) {
            PackageFolder folder;
            EXPECT_TRUE(folder.Extract(cabinet));
            EXPECT_EQ(folder.Files().size(), 6u);
        }
    });
}

// The header's number at 16 is where the entries begin; each is its size, its offset, 8 more bytes and a terminated
// name. Numbers are little-endian.
std::size_t EntryAt(const std::string& cabinet, std::size_t index) {
    uint16_t at;
    std::memcpy(&at, cabinet.data() + 16, sizeof at);
    return index == 0 ? at : cabinet.find('\0', EntryAt(cabinet, index - 1) + 16) + 1;
}

TEST(HostilePackage, ABadNameRefusesTheWholePackage) {
    PackageFolder folder;
    const std::string tooLong(259 - folder.Target().size(), 'x');
    for (const std::string& name :
         {"..\\evil"s, "C:\\evil"s, "good:stream"s, "sub\\NUL"s, "GOOD"s, "good\\below"s, tooLong}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(folder.Extract(BuildCabinet({{"good", "text"}, {"sub\\good", "text"}, {name, "text"}})));
        EXPECT_TRUE(folder.Files().empty());
    }
    EXPECT_TRUE(folder.Extract(BuildCabinet({{tooLong.substr(1), "text"}})))
        << "the longest name that a callback can still join to the folder";
}

TEST(HostilePackage, ACutPackageLeavesNothing) {
    PackageFolder folder;
    const std::string whole = BuildCabinet({{"a\\first", "text"}, {"second", kNoise.substr(0, 300)}});
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(folder.Extract(whole.substr(0, length))) << length;
        EXPECT_TRUE(folder.Files().empty()) << length;
    }
}

// The directory of entries has no checksum: a changed byte there may yield another part of the data, under another
// name. But never other data, and never half a package.
TEST(HostilePackage, AChangedByteNeverYieldsOtherData) {
    const std::string noise = kNoise.substr(0, 300);
    const std::string allData = "text" + noise;
    const std::string whole = BuildCabinet({{"first", "text"}, {"second", noise}});
    for (std::size_t place = 0; place < whole.size(); ++place) {
        for (const int flip : {0x01, 0xFF}) {
            SCOPED_TRACE(testing::Message() << "byte " << place << " ^ " << flip);
            std::string changed = whole;
            changed[place] = static_cast<char>(changed[place] ^ flip);
            const PackageFolder folder;
            const bool extracted = folder.Extract(changed);
            std::size_t files = 0;
            for (const auto& [name, data] : folder.Files()) {
                const bool isFolder = data == "<>";
                EXPECT_TRUE(isFolder || allData.find(data) != std::string::npos) << name;
                EXPECT_FALSE(name.starts_with("..")) << name;
                files += isFolder ? 0 : 1;
            }
            EXPECT_EQ(files, extracted ? 2u : 0u);
        }
    }
}

TEST(HostilePackage, PromisesBeyondTheLimitsAreRefused) {
    constexpr uint32_t kMostEntryBytes = 256u << 20;
    const Entries entries{{"a", "text"}, {"b", "text"}, {"c", "text"}, {"d", "text"}, {"e", "text"}};
    // large: how many entries promise `bytes`
    const std::pair<std::size_t, uint32_t> cases[] = {{1, 0xFFFFFFFF},      {1, 0x7FFFFFFF}, {1, kMostEntryBytes + 1},
                                                      {5, kMostEntryBytes}, {1, 3},          {1, 5}};
    for (const auto& [large, bytes] : cases) {
        PackageFolder folder;
        std::string cabinet = BuildCabinet(entries);
        for (std::size_t i = 0; i < large; ++i) {
            std::memcpy(&cabinet.at(EntryAt(cabinet, 4 - i)), &bytes, sizeof bytes);
        }
        const bool isShorterThanItsData = bytes == 3;  // legal: nobody refers to the last byte
        EXPECT_EQ(folder.Extract(cabinet), isShorterThanItsData) << bytes;
    }
}

TEST(HostilePackage, TheDiskKeepsAReserve) {
    constexpr uint64_t kMiB = 1 << 20;
    EXPECT_TRUE(wrb::LeavesReserve(0, 0, 1000 * kMiB));
    for (const auto& [available, total] : {std::pair(40 * kMiB, 1000 * kMiB), {80 * kMiB, 4000 * kMiB}}) {
        EXPECT_TRUE(wrb::LeavesReserve(5, available + 5, total));
        EXPECT_FALSE(wrb::LeavesReserve(5, available + 4, total));
        EXPECT_FALSE(wrb::LeavesReserve(5, 4, total));
    }
}

// Entries in falling order make a reader unpack the data before them again for each.
TEST(HostilePackage, EndlessRereadingIsStopped) {
    constexpr uint32_t kLarge = 4 << 20;
    Entries entries{{"large", wrb::test::PatternBytes(kLarge)}};
    for (int i = 0; i < 200; ++i) {
        entries.emplace_back(std::to_string(i), "text");
    }
    std::string cabinet = BuildCabinet(entries);
    EXPECT_TRUE(PackageFolder().Extract(cabinet));
    for (uint32_t i = 1; i <= 200; ++i) {
        const uint32_t offset = kLarge + 4 * (200 - i);
        std::memcpy(&cabinet.at(EntryAt(cabinet, i) + 4), &offset, sizeof offset);
    }
    EXPECT_FALSE(PackageFolder().Extract(cabinet));
}

TEST(EntryName, OnlyPlainRelativePathsPass) {
    for (const char* name : {"a", "a\\b\\c.log", ".hidden", "a..b", " a", "CONSOLE", "COM10", "a.nul"}) {
        const auto checked = wrb::CheckEntryName(name, false);
        ASSERT_TRUE(checked) << name;
        EXPECT_EQ(checked->narrow, name);
        EXPECT_EQ(checked->wide, wrb::AnsiToWide(name));
    }
    EXPECT_EQ(wrb::CheckEntryName("a/b", false)->wide, L"a\\b");
    std::istringstream names(R"(. .. ... ..\a ../a a\..\b a\.. a\.\b a\\b a\ a. a.\b \a /a \\server\share\a \\?\C:\a
        \\.\pipe\a C:\a c:a C: a.txt:stream a.txt::$DATA CON con NUL.txt a\nul PRN. COM1 lpt9.dat COM0 conin$ CLOCK$
        a<b a>b a"b a|b a? *)");
    std::vector<std::string> refused{"", "a ", "a. ", "a \\b", "aux .log", "a\tb", "\x01", "a\nb"};
    refused.insert(refused.end(), std::istream_iterator<std::string>(names), {});
    for (const std::string& name : refused) {
        EXPECT_FALSE(wrb::CheckEntryName(name, false)) << name;
        EXPECT_FALSE(wrb::CheckEntryName(name, true)) << name;
    }
    EXPECT_FALSE(wrb::CheckEntryName("COM\xC2\xB9", true)) << "a superscript one";
}

TEST(EntryName, MustComeBackFromTheCodePage) {
    const auto accented = wrb::CheckEntryName("caf\xC3\xA9", true);
    ASSERT_TRUE(accented);
    EXPECT_EQ(accented->wide, L"caf\u00E9");
    EXPECT_EQ(wrb::CheckEntryName(accented->narrow, false)->wide, accented->wide);
    // Division slash: some code pages have nothing nearer than a slash.
    const auto division = wrb::CheckEntryName(
        "a\xE2\x88\x95..\xE2\x88\x95"
        "b",
        true);
    EXPECT_EQ(division.has_value(), GetACP() == CP_UTF8);
}

}  // namespace
