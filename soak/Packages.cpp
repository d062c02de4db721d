#include "Packages.h"

#include <cstring>
#include <string_view>

#include "CabinetWriter.h"
#include "PfwLogRecord.h"
#include "TempFolder.h"
#include "Text.h"

namespace wrb::soak {
namespace {

constexpr uint32_t kTime = 1'706'745'599;
constexpr char kSpywareLog[] =
    "[GeneralInfo]\r\nGUID=50a40000-0000-4000-8000-000000000001\r\nSectionCount=2\r\n[entry one]\r\n[entry two]\r\n";

template <typename Item>
void FillCommon(Item& item, uint16_t port) {
    item.byHead = kPfwLogHead;
    item.byRear = kPfwLogRear;
    item.byDirection = 1;
    item.wPort = port;
    item.dwTime = kTime + port;
    item.wProtocol = 6;
    std::strcpy(item.szPVName, "C:\\Program Files\\Example\\service.exe");
    const std::wstring_view info = L"Example service";
    info.copy(item.wszPVInfo, info.size());
}

void Fill(SWRB_PFW_LOG_ITEM_V0& item, uint16_t port) {
    FillCommon(item, port);
    const uint8_t local[] = {192, 0, 2, 17};
    std::memcpy(item.dwLocalIP, local, sizeof local);
    std::memcpy(item.dwRemoteIP, local, sizeof local);
}

void Fill(SWRB_PFW_LOG_ITEM& item, uint16_t port) {
    FillCommon(item, port);
    std::strcpy(item.szLocalHost, "2001:db8::17");
    std::strcpy(item.szRemoteHost, "198.51.100.7");
}

// Records of one upload differ in their port.
template <typename Item>
std::wstring WriteLog(const std::wstring& path, uint16_t firstPort, unsigned records) {
    std::string bytes;
    for (unsigned i = 0; i < records; ++i) {
        Item item{};
        Fill(item, static_cast<uint16_t>(firstPort + i));
        bytes.append(reinterpret_cast<const char*>(&item), sizeof item);
    }
    test::WriteAll(path, bytes);
    return path;
}

}  // namespace

Packages::Packages(const std::wstring& folder)
    : m_spyware(folder + L"\\spyware.cab"), m_broken(folder + L"\\broken.cab") {
    const std::wstring v0 = WriteLog<SWRB_PFW_LOG_ITEM_V0>(folder + L"\\v0.log", 1000, 20);
    const std::wstring v1 = WriteLog<SWRB_PFW_LOG_ITEM>(folder + L"\\v1.log", 2000, 25);
    m_firewall = {{folder + L"\\v0.cab", 20}, {folder + L"\\v1.cab", 25}, {folder + L"\\both.cab", 45}};
    WriteCabinet(m_firewall[0].path, {{"v0.log", v0}});
    WriteCabinet(m_firewall[1].path, {{"v1.log", v1}});
    WriteCabinet(m_firewall[2].path, {{"v0.log", v0}, {"v1.log", v1}});
    const std::wstring log = folder + L"\\" + kSpywareEntry;
    test::WriteAll(log, kSpywareLog);
    WriteCabinet(m_spyware, {{WideToUtf8(kSpywareEntry), log}});
    test::WriteAll(m_broken, std::string(5000, 'M'));
}

}  // namespace wrb::soak
