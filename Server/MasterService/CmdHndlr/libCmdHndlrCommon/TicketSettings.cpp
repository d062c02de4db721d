#include "TicketSettings.h"

#include <algorithm>
#include <iterator>

namespace wrb {
namespace {

using Threads = uint32_t TicketThreads::*;

struct TicketRow {
    const char* key;
    uint32_t defaultValue;  // unless a thread number is the default
    Threads defaultThreads;
};

// In the order of TicketSetting.
constexpr TicketRow kRows[] = {
    {"NumberOfConcurrentLogUploadingClient", 0, &TicketThreads::fixed},
    {"NumberOfMaxConcurrentLogUploadingClient", 0, &TicketThreads::maximum},
    {"NumberOfMaxProcessingLogInSec", 4, nullptr},
    {"MaxWaitTime", 1800, nullptr},
    {"MaxUploadTime", 60, nullptr},
    {"MinClearListFrequencyInSec", 60, nullptr},
};
static_assert(std::size(kRows) == static_cast<std::size_t>(TicketSetting::kCount));

const TicketRow& RowOf(TicketSetting setting) noexcept {
    return kRows[static_cast<std::size_t>(setting)];
}

}  // namespace

bool TicketSettings::IsInForce() const {
    return m_scanIni.readINIInt("Global Setting", "EnablePFWLogUploadingTicket", -1) == 1;
}

TicketThreads TicketSettings::Threads() const {
    const auto read = [this](const char* key, int32_t defaultValue) {
        return m_scanIni.readINIInt("INI_SERVER_SECTION", key, defaultValue);
    };
    // The second key is misspelled in the INI file.
    return {read("Command_Handler_Static_Thread_Number", 20), read("Command_Handler_Maxium_Thread_Number", 40)};
}

uint32_t TicketSettings::Read(TicketSetting setting, const TicketThreads& threads) const {
    const TicketRow& row = RowOf(setting);
    const uint32_t defaultValue = row.defaultThreads != nullptr ? threads.*row.defaultThreads : row.defaultValue;
    const uint32_t value = m_serverIni.readINIInt("LOG_TICKET_SECTION", row.key, static_cast<int32_t>(defaultValue));
    if (row.defaultThreads != nullptr) {
        return std::min(threads.maximum, value);
    }
    return setting == TicketSetting::Rate && value == 0 ? defaultValue : value;
}

const char* TicketSettings::Key(TicketSetting setting) noexcept {
    return RowOf(setting).key;
}

}  // namespace wrb
