#include "INICache.h"
#include "Pages.h"
#include "TicketSettings.h"

namespace wrb {

View ShowUploads(const Request& /*request*/) {
    const TicketSettings settings(ScanIniCache(), ServerIniCache());
    const TicketThreads threads = settings.Threads();
    View view;
    Data rows = ListData();
    for (uint32_t i = 0; i < static_cast<uint32_t>(TicketSetting::kCount); ++i) {
        const auto setting = static_cast<TicketSetting>(i);
        Data row;
        row["key"] = TicketSettings::Key(setting);
        row["value"] = NumberData(settings.Read(setting, threads));
        rows.push_back(row);
    }
    view.data["ticket"] = std::move(rows);
    view.data["inForce"] = settings.IsInForce();
    return view;
}

}  // namespace wrb
