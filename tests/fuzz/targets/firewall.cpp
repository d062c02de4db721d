// Firewall log files: every record is read once, its texts end within their fields, its time is that of the calendar.
#include "CheckPFWLogVersion.h"
#include "Fuzz.h"
#include "PfwLogReader.h"
#include "PfwLogText.h"
#include "Text.h"

namespace {

std::wstring Calendar(uint32_t seconds, const char* format) {
    const std::time_t time = seconds;
    std::tm local{};
    char text[16];
    std::strftime(text, sizeof text, format, localtime_r(&time, &local));
    return wrb::AnsiToWide(text);
}

template <typename Item>
std::size_t ReadAll(MemoryFile& file) {
    wrb::PfwLogReader reader(&file, sizeof(Item));
    wrb::LocalTimeDigits time;
    wrb::PfwLogTexts texts;
    std::size_t records = 0;
    for (; const void* record = reader.Next(); ++records) {
        const auto& item = *static_cast<const Item*>(record);
        DecodePfwLogTexts(item, texts);
        REQUIRE(std::wcslen(texts.localHost) < std::size(texts.localHost));
        REQUIRE(std::wcslen(texts.remoteHost) < std::size(texts.remoteHost));
        REQUIRE(wrb::WideToAnsi(texts.pvName) == std::string(item.szPVName, strnlen(item.szPVName, 259)));
        REQUIRE(std::wstring(texts.pvInfo) == std::wstring(item.wszPVInfo, wcsnlen(item.wszPVInfo, 127)));
        time.Set(item.dwTime);
        REQUIRE(Calendar(item.dwTime, "%Y%m%d") == time.Date() && Calendar(item.dwTime, "%H%M%S") == time.Time());
    }
    return records;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    MemoryFile file{data, size};
    const bool v0 = wrb::PfwLogVersionOfFile(&file, static_cast<uint32_t>(size)) == wrb::PfwLogVersion::kV0;
    file.position = 0;
    const std::size_t recordSize = v0 ? sizeof(SWRB_PFW_LOG_ITEM_V0) : sizeof(SWRB_PFW_LOG_ITEM);
    const std::size_t records = v0 ? ReadAll<SWRB_PFW_LOG_ITEM_V0>(file) : ReadAll<SWRB_PFW_LOG_ITEM>(file);
    REQUIRE(records == (size + recordSize - 1) / recordSize);
    return 0;
}
