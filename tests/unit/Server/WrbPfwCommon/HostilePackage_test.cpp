#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>

#include "CabinetBuilder.h"
#include "PackageFolder.h"
#include "WrbPfwCommon.h"

namespace {

const Bytes kText{'t', 'e', 'x', 't'};
const Bytes kFolder{'<', '>'};

bool Extract(const CPackageFolder& folder) {
    return fpkExtract(folder.Package().c_str(), folder.Target().c_str(), nullptr, nullptr);
}

bool Contains(const Bytes& whole, const Bytes& part) {
    return std::search(whole.begin(), whole.end(), part.begin(), part.end()) != whole.end() || part.empty();
}

void Put(Bytes& cabinet, std::size_t at, uint32_t number) {
    for (std::size_t i = 0; i < 4; ++i) {
        cabinet.at(at + i) = static_cast<uint8_t>(number >> (8 * i));
    }
}

// The header's number at 16 is where the entries begin; each is its size, its offset, 8 more bytes and a terminated
// name. Numbers are little-endian.
std::size_t EntryAt(const Bytes& cabinet, std::size_t index) {
    std::size_t at = cabinet.at(16) | std::size_t{cabinet.at(17)} << 8;
    for (; index > 0; --index) {
        at += 16;
        while (cabinet.at(at++) != 0) {
        }
    }
    return at;
}

TEST(HostilePackage, ABadNameRefusesTheWholePackage) {
    CPackageFolder folder;
    const std::string tooLong(259 - folder.Target().size(), 'x');
    for (const std::string& name :
         {std::string("..\\evil"), std::string("C:\\evil"), std::string("good:stream"), std::string("sub\\NUL"),
          std::string("GOOD"), std::string("good\\below"), tooLong}) {
        SCOPED_TRACE(name);
        folder.WritePackage(BuildCabinet({{"good", kText}, {"sub\\good", kText}, {name, kText}}));
        EXPECT_FALSE(Extract(folder));
        EXPECT_TRUE(folder.Files().empty());
    }
    folder.WritePackage(BuildCabinet({{tooLong.substr(1), kText}}));
    EXPECT_TRUE(Extract(folder)) << "the longest name that a callback can still join to the folder";
}

TEST(HostilePackage, ACutPackageLeavesNothing) {
    CPackageFolder folder;
    const Bytes whole = BuildCabinet({{"a\\first", kText}, {"second", Noise(300)}});
    for (std::size_t length = 0; length < whole.size(); ++length) {
        folder.WritePackage(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        EXPECT_FALSE(Extract(folder)) << length;
        EXPECT_TRUE(folder.Files().empty()) << length;
    }
}

// The directory of entries has no checksum: a changed byte there may yield another part of the data, under another
// name. But never other data, and never half a package.
TEST(HostilePackage, AChangedByteNeverYieldsOtherData) {
    const Bytes noise = Noise(300);
    Bytes allData = kText;
    allData.insert(allData.end(), noise.begin(), noise.end());
    const Bytes whole = BuildCabinet({{"first", kText}, {"second", noise}});
    CPackageFolder folder;
    for (std::size_t place = 0; place < whole.size(); ++place) {
        for (const uint8_t flip : {uint8_t{0x01}, uint8_t{0xFF}}) {
            SCOPED_TRACE(testing::Message() << "byte " << place << " ^ " << int{flip});
            Bytes changed = whole;
            changed[place] ^= flip;
            folder.WritePackage(changed);
            const bool extracted = Extract(folder);
            std::size_t files = 0;
            for (const auto& [name, data] : folder.Files()) {
                const bool isFolder = data == kFolder;
                EXPECT_TRUE(isFolder || Contains(allData, data)) << name;
                EXPECT_FALSE(name.starts_with("..")) << name;
                files += isFolder ? 0 : 1;
            }
            EXPECT_EQ(files, extracted ? 2u : 0u);
            folder.EmptyTarget();
        }
    }
}

TEST(HostilePackage, PromisesBeyondTheLimitsAreRefused) {
    constexpr uint32_t kMostEntryBytes = 256u << 20;
    const std::vector<tagNewEntry> entries{{"a", kText}, {"b", kText}, {"c", kText}, {"d", kText}, {"e", kText}};
    const struct {
        std::size_t large;  // how many entries promise `bytes`
        uint32_t bytes;
    } cases[] = {{1, 0xFFFFFFFF}, {1, 0x7FFFFFFF}, {1, kMostEntryBytes + 1}, {5, kMostEntryBytes}, {1, 3}, {1, 5}};
    for (const auto& promise : cases) {
        CPackageFolder folder;
        Bytes cabinet = BuildCabinet(entries);
        for (std::size_t i = 0; i < promise.large; ++i) {
            Put(cabinet, EntryAt(cabinet, 4 - i), promise.bytes);
        }
        folder.WritePackage(cabinet);
        const bool isShorterThanItsData = promise.bytes == 3;  // legal: nobody refers to the last byte
        EXPECT_EQ(Extract(folder), isShorterThanItsData) << promise.bytes;
    }
}

// Entries in falling order make a reader unpack the data before them again for each.
TEST(HostilePackage, EndlessRereadingIsStopped) {
    CPackageFolder folder;
    constexpr uint32_t kLarge = 4 << 20;
    std::vector<tagNewEntry> entries{{"large", Noise(kLarge)}};
    for (int i = 0; i < 200; ++i) {
        entries.push_back({std::to_string(i), kText});
    }
    Bytes cabinet = BuildCabinet(entries);
    folder.WritePackage(cabinet);
    EXPECT_TRUE(Extract(folder));
    folder.EmptyTarget();
    for (uint32_t i = 1; i <= 200; ++i) {
        Put(cabinet, EntryAt(cabinet, i) + 4, kLarge + 4 * (200 - i));
    }
    folder.WritePackage(cabinet);
    EXPECT_FALSE(Extract(folder));
}

}  // namespace
