// Sample records of firewall log files.
#pragma once

#include <cstring>
#include <string>

#include "PfwLogRecord.h"

namespace wrb::test {

inline void SetHosts(SWRB_PFW_LOG_ITEM_V0& item) {
    const uint8_t local[] = {192, 168, 0, 10};
    const uint8_t remote[] = {255, 1, 20, 0};
    std::memcpy(item.dwLocalIP, local, sizeof local);
    std::memcpy(item.dwRemoteIP, remote, sizeof remote);
}

inline void SetHosts(SWRB_PFW_LOG_ITEM& item) {
    std::strcpy(item.szLocalHost, "192.168.0.10");
    std::strcpy(item.szRemoteHost, "fe80::1");
}

// A sound record in which no two fields are alike.
template <typename Item>
Item SampleRecord() {
    Item item = {};
    item.byHead = kPfwLogHead;
    item.byDirection = 1;
    item.wPort = 443;
    item.dwTime = 1'700'000'000;
    SetHosts(item);
    std::strcpy(item.szPVName, "C:\\Program Files\\a.exe");
    const std::wstring info = L"Gr\u00FC\u00DFe";
    info.copy(item.wszPVInfo, info.size());
    item.wProtocol = 6;
    item.wType = 0xFFFF;
    item.wSubType = 9;
    item.byRear = kPfwLogRear;
    return item;
}

template <typename Item>
std::string BytesOf(const Item& item) {
    return std::string(reinterpret_cast<const char*>(&item), sizeof item);
}

}  // namespace wrb::test
