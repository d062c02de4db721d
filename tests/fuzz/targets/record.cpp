// Log rows and events for the store. What is accepted fits its columns.
#include "CalendarTime.h"
#include "Fuzz.h"
#include "RecordParser.h"

namespace {

template <typename Parse>
void Read(Parse parse, std::span<const uint8_t> bytes) try {
    const wrb::Record record = parse(bytes);
    REQUIRE(record.values.size() == record.table->columns.size());
    for (std::size_t i = 0; i < record.values.size(); ++i) {
        REQUIRE(wrb::FitsColumn(record.table->columns[i].kind, record.values[i]));
    }
} catch (const std::exception& error) {
    REQUIRE(*error.what() != '\0');
}

}  // namespace

// The module behind it talks to the system.
std::wstring wrb::LocalTimeText(int64_t) {
    return L"2024-01-31 23:59:59";
}

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    Read(wrb::ParseLogPoolMessage, {data, size});
    Read(wrb::ParseAgentEvent, {data, size});
    Read(wrb::ParseSpywareEvent, {data, size});
    return 0;
}
