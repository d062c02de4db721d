#include "CounterSection.h"

#include <gtest/gtest.h>

#include <cstring>

#include "CounterUpdates.h"
#include "UniqueName.h"

namespace {

using wrb::CounterAttach;

class CounterSection : public testing::Test {
  protected:
    std::wstring sectionName = L"Local\\" + wrb::test::UniqueName(L"section");
    std::wstring mutexName = L"Local\\" + wrb::test::UniqueName(L"mutex");
    wrb::tagCounterNames names{sectionName.c_str(), mutexName.c_str()};
    wrb::CCounterSection section;
    wrb::CCounterReader reader;
    uint32_t error = 0;
};

TEST_F(CounterSection, OutlivesItsMakerAsLongAsSomebodyHoldsIt) {
    EXPECT_EQ(reader.Attach(error, names.section), CounterAttach::Missing);
    ASSERT_EQ(section.Open(names, error), CounterAttach::Attached);
    EXPECT_EQ(section.Block()->size, sizeof(HandlerCounterBlock));
    wrb::CountCall(section.Block()->slots[127]);
    wrb::AddCounterReference(*section.Block());

    ASSERT_EQ(reader.Attach(error, names.section), CounterAttach::Attached);
    section.Close();
    EXPECT_EQ(reader.Slot(127).calls, 1u);
    EXPECT_EQ(reader.CallsInProgress(), 1);
    EXPECT_EQ(reader.Slot(128).calls, 0u) << "no such slot";

    ASSERT_EQ(section.Open(names, error), CounterAttach::Attached);
    EXPECT_EQ(section.Block()->slots[127].calls, 1u) << "attached again, not made anew";
    section.Close();
    reader = {};
    EXPECT_EQ(reader.Attach(error, names.section), CounterAttach::Missing);
}

TEST_F(CounterSection, RefusesASectionThatIsNoBlockOfThisVersion) {
    HandlerCounterBlock good = {};
    good.signature = wrb::kCounterSignature;
    good.version = wrb::kCounterVersion;
    good.size = sizeof good;
    good.slotCount = wrb::kCounterSlots;
    HandlerCounterBlock noBlock = good;
    noBlock.signature = 0;
    HandlerCounterBlock newer = good;
    ++newer.version;
    HandlerCounterBlock larger = good;
    larger.size += 8;
    HandlerCounterBlock fewerSlots = good;
    --fewerSlots.slotCount;
    const struct {
        const HandlerCounterBlock& content;
        CounterAttach result;
    } cases[] = {{good, CounterAttach::Attached},
                 {noBlock, CounterAttach::Foreign},
                 {newer, CounterAttach::Foreign},
                 {larger, CounterAttach::Foreign},
                 {fewerSlots, CounterAttach::Foreign}};
    for (const auto& foreign : cases) {
        SCOPED_TRACE(&foreign - cases);
        wrb::CKernelHandle other(
            CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof good, names.section));
        wrb::CMappedView view(MapViewOfFile(other.Get(), FILE_MAP_WRITE, 0, 0, 0));
        ASSERT_TRUE(view);
        std::memcpy(view.Get(), &foreign.content, sizeof foreign.content);
        EXPECT_EQ(section.Open(names, error), foreign.result);
        EXPECT_EQ(reader.Attach(error, names.section), foreign.result);
        EXPECT_EQ(std::memcmp(view.Get(), &foreign.content, sizeof foreign.content), 0) << "left as it was";
        section.Close();
        reader = {};
    }
}

TEST_F(CounterSection, RefusesWhatIsSomethingElse) {
    {
        const wrb::CKernelHandle tiny(
            CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4, names.section));
        EXPECT_EQ(section.Open(names, error), CounterAttach::Foreign);
        EXPECT_EQ(reader.Attach(error, names.section), CounterAttach::Foreign);
        reader = {};
    }
    const wrb::CKernelHandle event(CreateEventW(nullptr, TRUE, FALSE, names.section));
    EXPECT_EQ(section.Open(names, error), CounterAttach::Foreign);
    EXPECT_EQ(section.Block(), nullptr);
    EXPECT_EQ(reader.Attach(error, names.section), CounterAttach::Foreign);
}

}  // namespace
