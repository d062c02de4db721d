#include "CounterSection.h"

#include <gtest/gtest.h>

#include <cstring>

#include "UniqueName.h"

namespace {

using wrb::CounterAttach;

TEST(CounterSection, RefusesASectionThatIsNoBlockOfThisVersion) {
    const std::wstring sectionName = L"Local\\" + wrb::test::UniqueName(L"section");
    const std::wstring mutexName = L"Local\\" + wrb::test::UniqueName(L"mutex");
    const wrb::tagCounterNames names{sectionName.c_str(), mutexName.c_str()};
    HandlerCounterBlock good = {};
    good.signature = wrb::kCounterSignature;
    good.version = wrb::kCounterVersion;
    good.size = sizeof good;
    good.slotCount = wrb::kCounterSlots;
    const struct {
        uint32_t HandlerCounterBlock::*field;
        uint32_t change;
        CounterAttach result;
    } cases[] = {{&HandlerCounterBlock::version, 0, CounterAttach::Attached},
                 {&HandlerCounterBlock::signature, 1, CounterAttach::Foreign},
                 {&HandlerCounterBlock::version, 1, CounterAttach::Foreign},
                 {&HandlerCounterBlock::size, 8, CounterAttach::Foreign},
                 {&HandlerCounterBlock::slotCount, 0xFFFFFFFF, CounterAttach::Foreign}};
    for (const auto& foreign : cases) {
        SCOPED_TRACE(&foreign - cases);
        HandlerCounterBlock content = good;
        content.*foreign.field += foreign.change;
        wrb::CKernelHandle other(
            CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof good, names.section));
        wrb::CMappedView view(MapViewOfFile(other.Get(), FILE_MAP_WRITE, 0, 0, 0));
        ASSERT_TRUE(view);
        std::memcpy(view.Get(), &content, sizeof content);
        wrb::CCounterSection section;
        uint32_t error = 0;
        EXPECT_EQ(section.Open(names, error), foreign.result);
        EXPECT_EQ(wrb::CCounterReader().Attach(error, names.section), foreign.result);
        EXPECT_EQ(std::memcmp(view.Get(), &content, sizeof content), 0) << "left as it was";
    }
}

}  // namespace
