#include "CounterScope.h"

#include <gmock/gmock.h>

#include <cstring>

#include "AccessOf.h"
#include "CapturedLog.h"
#include "ChildProcess.h"
#include "CounterSampler.h"
#include "CounterSection.h"
#include "DebugLog.h"
#include "FailedCalls.h"
#include "ManualClock.h"
#include "PerfMonMgr.h"
#include "UniqueName.h"

namespace {

using wrb::CounterAttach;

TEST(CounterSection, RefusesASectionThatIsNoBlockOfThisVersion) {
    const std::wstring sectionName = L"Local\\" + wrb::test::UniqueName(L"section");
    const std::wstring mutexName = L"Local\\" + wrb::test::UniqueName(L"mutex");
    const wrb::CounterNames names{sectionName.c_str(), mutexName.c_str()};
    constexpr DWORD kWhole = sizeof(HandlerCounterBlock);
    const std::tuple<uint32_t HandlerCounterBlock::*, uint32_t, DWORD, CounterAttach> cases[] = {
        {&HandlerCounterBlock::version, 0, kWhole, CounterAttach::Attached},
        {&HandlerCounterBlock::version, 0, 4096, CounterAttach::Foreign},
        {&HandlerCounterBlock::signature, 1, kWhole, CounterAttach::Foreign},
        {&HandlerCounterBlock::version, 1, kWhole, CounterAttach::Foreign},
        {&HandlerCounterBlock::size, 8, kWhole, CounterAttach::Foreign},
        {&HandlerCounterBlock::slotCount, 0xFFFFFFFF, kWhole, CounterAttach::Foreign}};
    for (const auto& [field, change, bytes, result] : cases) {
        SCOPED_TRACE(testing::Message() << change << " " << bytes);
        wrb::KernelHandle other(
            CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, bytes, names.section));
        wrb::MappedView view(MapViewOfFile(other.Get(), FILE_MAP_WRITE, 0, 0, 0));
        ASSERT_TRUE(view);
        auto& block = *static_cast<HandlerCounterBlock*>(view.Get());
        block.signature = wrb::kCounterSignature;
        block.version = wrb::kCounterVersion;
        block.size = kWhole;
        block.slotCount = wrb::kCounterSlots;
        block.*field += change;
        const std::string content(static_cast<const char*>(view.Get()), bytes);
        wrb::CounterSection section;
        uint32_t error = 0;
        EXPECT_EQ(section.Open(names, error), result);
        EXPECT_EQ(wrb::CounterReader().Attach(error, names.section), result);
        EXPECT_EQ(std::memcmp(view.Get(), content.data(), bytes), 0) << "left as it was";
    }
}

TEST(CounterSection, ACallOfTheSystemThatFailsLeavesNothingOpen) {
    const std::wstring names[] = {L"Local\\" + wrb::test::UniqueName(L"section"), wrb::test::UniqueName(L"mutex"),
                                  wrb::test::UniqueName(L"holder")};
    wrb::CounterSection section;
    CounterAttach result{};
    uint32_t error = 0;
    const auto open = [&] { result = section.Open({names[0].c_str(), names[1].c_str(), names[2].c_str()}, error); };
    const auto check = [&] {
        const bool attached = section.Block() != nullptr;
        EXPECT_EQ(result, attached ? CounterAttach::Attached : CounterAttach::Failed);
        EXPECT_EQ(section.Mutex() != nullptr, attached);
        EXPECT_EQ(error == 0, attached);
        section.Close();
    };
    EXPECT_EQ(wrb::test::FailEachCall({"CreateMutexW", "CreateFileMappingW", "MapViewOfFile", "CreateEventW"},
                                      wrb::test::FailsOn::ThisThread, open, check),
              8u);
}

class CounterScope : public testing::Test {
  protected:
    void SetUp() override {
        wrb::StartCounters();
        uint32_t error = 0;
        ASSERT_EQ(reader.Attach(error), CounterAttach::Attached);
    }
    void TearDown() override { CWrbyPerfMonMgr::CloseSingleton(); }

    void Call(uint32_t slot, uint32_t milliseconds) {
        const wrb::CounterCall counted(slot, clock);
        clock.AdvanceTick(milliseconds);
    }
    // "calls maximum total average".
    std::string Shown(uint32_t slot) const {
        const HandlerCounterSlot row = reader.Slot(slot);
        return std::to_string(row.calls) + " " + std::to_string(row.maximum) + " " + std::to_string(row.total) + " " +
               std::to_string(row.average);
    }

    ManualClock clock{0xFFFFFFF0};  // about to wrap
    wrb::CounterReader reader;
};

TEST_F(CounterScope, ACallIsCountedAtItsStartAndTimedAtItsEnd) {
    {
        const wrb::CounterCall first(5, clock);
        EXPECT_EQ(reader.CallsInProgress(), 1);
        clock.AdvanceTick(30);
        EXPECT_EQ(Shown(5), "1 0 0 0");
    }
    {
        wrb::CounterCall second(5, clock);
        second.ReportUndelivered({3, 4});
        clock.AdvanceTick(11);
    }
    wrb::CounterCall(6, clock).ReportUndelivered({});
    EXPECT_EQ(reader.Undelivered().rows, 3u);
    EXPECT_EQ(reader.Undelivered().events, 4u);
    EXPECT_EQ(reader.Slot(5).failures, 1u);
    EXPECT_EQ(reader.Slot(6).failures, 0u);
    EXPECT_EQ(Shown(5), "2 30 41 20");
    EXPECT_EQ(reader.CallsInProgress(), 0);
    const wrb::TimeCounts times = reader.Times(5);
    EXPECT_EQ(wrb::CountOf(times), 2u);
    EXPECT_EQ(times[wrb::TimeBucketOf(11'000)] + times[wrb::TimeBucketOf(30'000)], 2u);
}

TEST_F(CounterScope, ASampleShowsWhatCameSinceTheOneBefore) {
    const auto shown = [&] {
        const wrb::CounterSample last = reader.Samples().back();
        const auto bucket = [](uint32_t time) { return wrb::TimeBucketOf(time) - wrb::TimeBucketOf(20'000); };
        return (testing::Message() << reader.Samples().size() << ": " << last.second << " " << last.milliseconds << " "
                                   << last.calls << " " << last.failures << " " << bucket(last.p50) << " "
                                   << bucket(last.p99) - wrb::TimeBucketOf(30'000) + wrb::TimeBucketOf(20'000))
            .GetString();
    };
    wrb::CounterSampler sampler(120, clock);
    Call(5, 70);
    sampler.Take();
    EXPECT_TRUE(reader.Samples().empty()) << "the first interval begins";
    Call(5, 20);
    Call(6, 20);
    wrb::CounterCall(7, clock).ReportResult(false);
    Call(6, 30);
    Call(125, 5000);  // of an alert type, counted by its command
    clock.AdvanceSeconds(9);
    sampler.Take();
    EXPECT_EQ(shown(), "1: 9 5070 4 1 0 0");
    wrb::StartCounters();  // sets all to zero
    Call(5, 20);
    Call(5, 30);
    sampler.Take();
    EXPECT_EQ(shown(), "1: 9 50 2 0 0 0");
    for (uint32_t i = 0; i < wrb::kCounterSamples + 5; ++i) {
        Call(5, 20);
        Call(5, 30);
        clock.AdvanceSeconds(1);
        sampler.Take();
    }
    EXPECT_EQ(shown(), "359: 374 50 2 0 0 0");
    EXPECT_EQ(reader.Samples().front().second, 374 - 358);
}

TEST_F(CounterScope, AStartZeroesWhatNoOtherProcessCounts) {
    for (const bool attached : {true, false}) {
        const auto startAgain = [&] {
            if (!attached) {
                CWrbyPerfMonMgr::CloseSingleton();  // the reader still holds the section
            }
            wrb::StartCounters();
        };
        wrb::CounterCall(5, clock).ReportUndelivered({1, 1});
        {
            const wrb::test::ChildProcess child(L"perf_counter_child.exe", {L"3", L"and wait"});
            ASSERT_TRUE(child.WaitForOutput("counted"));
            EXPECT_EQ(reader.Slot(5).calls, 1u) << "zeroed by the second process";
            startAgain();
            EXPECT_EQ(reader.Slot(7).calls, 3u) << "zeroed under the second process";
        }
        startAgain();
        EXPECT_EQ(reader.Slot(5).calls + reader.Slot(7).calls, 0u);
        EXPECT_EQ(reader.Undelivered().rows + reader.Undelivered().events, 0u);
    }
}

TEST_F(CounterScope, AProcessThatCannotAttachSaysSoOnce) {
    CWrbyPerfMonMgr::CloseSingleton();
    reader = {};
    const wrb::KernelHandle other(CreateEventW(nullptr, TRUE, FALSE, wrb::kCounterSectionName));
    TakeCapturedLog();
    wrb::StartCounters();
    Call(5, 0);
    EXPECT_THAT(TakeCapturedLog(), testing::ElementsAre(testing::Field(&CapturedLine::level, kLogWarning)));
}

TEST_F(CounterScope, TwoProcessesShareTheCounters) {
    const wrb::test::ChildProcess child(L"perf_counter_child.exe", {L"300"});
    for (int i = 0; i < 300; ++i) {
        const wrb::CounterCall call(7);
    }
    ASSERT_EQ(child.WaitForExit(), 0u) << child.Output();
    EXPECT_EQ(reader.Slot(7).calls, 600u);
    EXPECT_EQ(reader.CallsInProgress(), 0);
}

TEST_F(CounterScope, WhoHoldsTheMutexStopsNoCallAndNoStartAndLosesNoTime) {
    {
        const wrb::test::ChildProcess child(L"perf_counter_child.exe", {L"hold"});
        ASSERT_TRUE(child.WaitForOutput("holding"));
        Call(5, 10);
        Call(6, 1);
        Call(5, 30);
        EXPECT_EQ(Shown(5), "2 0 0 0");
        EXPECT_EQ(reader.CallsInProgress(), 3);
        wrb::StartCounters();
        wrb::StopCounters();
        wrb::StartCounters();
        Call(5, 2);
    }
    Call(7, 4);
    EXPECT_EQ(Shown(5) + ", " + Shown(6) + ", " + Shown(7), "3 30 42 14, 1 1 1 1, 1 4 4 4");
    EXPECT_EQ(reader.CallsInProgress(), 0);
}

TEST_F(CounterScope, TheMutexOfAProcessThatDiedCountsAsTaken) {
    // Ended while it owns the mutex.
    ASSERT_TRUE(wrb::test::ChildProcess(L"perf_counter_child.exe", {L"hold"}).WaitForOutput("holding"));
    Call(5, 6);
    EXPECT_EQ(Shown(5), "1 6 6 6");
    EXPECT_EQ(reader.CallsInProgress(), 0);
}

TEST_F(CounterScope, SharedObjectsAreForTheServersAccounts) {
    wrb::LogFilter::Shared();
    const struct {
        wrb::KernelHandle object;
        bool everyone;
    } kObjects[] = {
        {wrb::KernelHandle(OpenMutexW(READ_CONTROL, FALSE, wrb::kCounterMutexName)), false},
        {wrb::KernelHandle(OpenEventW(READ_CONTROL, FALSE, wrb::kCounterHolderName)), false},
        {wrb::KernelHandle(OpenFileMappingW(READ_CONTROL, FALSE, wrb::kCounterSectionName)), true},
        {wrb::KernelHandle(OpenFileMappingW(READ_CONTROL, FALSE, wrb::kLogFilterSection)), true},
    };
    for (const auto& [object, everyone] : kObjects) {
        const std::string access = wrb::test::AccessOf(object.Get());
        EXPECT_EQ(std::ranges::count(access, '('), everyone ? 5 : 4) << access;
        for (const char* account : {";;;SY)", ";;;BA)", ";;;SU)"}) {
            EXPECT_THAT(access, testing::HasSubstr(account));
        }
        EXPECT_EQ(access.find(";;;WD)") != std::string::npos, everyone) << access;
        EXPECT_THAT(access, testing::Not(testing::HasSubstr("(A;;GA;;;WD)")));
    }
}

}  // namespace
