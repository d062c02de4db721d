// What the host publishes, held against docs/performance-counters.man.
#include "PerformanceMonitor.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "ChildProcess.h"
#include "CounterSection.h"
#include "TempFolder.h"
#include "Text.h"
#include "UniqueName.h"
#include "XmlElement.h"

namespace wrb::test {
namespace {

const XmlElement& Provider() {
    static const XmlElement root = ParseXml(Utf8ToWide(ReadAll(ProgramFolder() + L"performance-counters.man")));
    return root.Child(L"instrumentation").Child(L"counters").Child(L"provider");
}

std::wstring GuidText(const GUID& guid) {
    const auto& tail = guid.Data4;
    return FormatWide(L"{%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}", static_cast<unsigned>(guid.Data1),
                      guid.Data2, guid.Data3, tail[0], tail[1], tail[2], tail[3], tail[4], tail[5], tail[6], tail[7]);
}

// The text of wrbhost.exe under that number.
std::wstring Resource(std::wstring_view number) {
    static const ModuleHandle host(
        LoadLibraryExW((ProgramFolder() + L"wrbhost.exe").c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    wchar_t text[256] = L"";
    LoadStringW(host.Get(), static_cast<UINT>(std::stoul(std::wstring(number))), text, 256);
    return text;
}

void ExpectTexts(const XmlElement& element) {
    for (const std::wstring attribute : {L"name", L"description"}) {
        EXPECT_EQ(Resource(element.Attribute(attribute + L"ID")), element.Attribute(attribute));
    }
}

TEST(PerformanceMonitor, ThePublishedCountersAreThoseOfTheManifest) {
    const std::map<ULONG, std::wstring> types = {{PERF_COUNTER_RAWCOUNT, L"perf_counter_rawcount"},
                                                 {PERF_COUNTER_COUNTER, L"perf_counter_counter"},
                                                 {PERF_AVERAGE_BULK, L"perf_average_bulk"},
                                                 {PERF_AVERAGE_BASE, L"perf_average_base"}};
    const XmlElement& set = Provider().Child(L"counterSet");
    EXPECT_EQ(Provider().Attribute(L"providerGuid"), GuidText(kMonitorProvider));
    EXPECT_EQ(set.Attribute(L"guid"), GuidText(kMonitorCounterSet));
    ExpectTexts(set);
    ASSERT_EQ(set.children.size(), MonitorCounters().size());
    for (std::size_t i = 0; i < set.children.size(); ++i) {
        const XmlElement& said = set.children[i];
        const MonitorCounter& counter = MonitorCounters()[i];
        SCOPED_TRACE(counter.id);
        EXPECT_EQ(said.Attribute(L"id"), std::to_wstring(counter.id));
        EXPECT_EQ(said.Attribute(L"type"), types.at(counter.type));
        EXPECT_EQ(said.Attribute(L"detailLevel"), counter.detail == PERF_DETAIL_NOVICE ? L"standard" : L"advanced");
        std::set<std::wstring_view> attributes;
        said.Child(L"counterAttributes").ForEachChild(L"counterAttribute", [&](const XmlElement& attribute) {
            attributes.insert(attribute.Attribute(L"name"));
        });
        EXPECT_TRUE(attributes.contains(L"reference"));
        EXPECT_NE(attributes.contains(L"noDisplay"), counter.displayed);
        if (counter.displayed) {
            ExpectTexts(said);
        }
        if (counter.type == PERF_AVERAGE_BULK) {  // the number that it is divided by comes next
            EXPECT_EQ(said.Attribute(L"baseID"), std::to_wstring(MonitorCounters()[i + 1].id));
        }
    }
}

TEST(PerformanceMonitor, PublishesABlockOnceThereIsOne) {
    const std::wstring section = L"Local\\" + UniqueName(L"section");
    const std::wstring mutex = L"Local\\" + UniqueName(L"mutex");
    const std::wstring holder = L"Local\\" + UniqueName(L"holder");
    EXPECT_EQ(PerformanceMonitor().Publish(section.c_str()), DWORD{ERROR_FILE_NOT_FOUND});
    CounterSection block;
    uint32_t error = 0;
    ASSERT_EQ(block.Open({section.c_str(), mutex.c_str(), holder.c_str()}, error), CounterAttach::Attached);
    for (int run = 0; run < 2; ++run) {  // the end of an object takes its counter set along
        EXPECT_EQ(PerformanceMonitor().Publish(section.c_str()), DWORD{ERROR_SUCCESS});
    }
}

}  // namespace
}  // namespace wrb::test
