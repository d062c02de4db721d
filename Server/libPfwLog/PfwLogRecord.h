// The records of an agent's firewall log file: fixed-size records one after the other, without header or trailer, all
// of one version. Integers are little-endian; narrow texts are in the system's ANSI code page. Every text ends at its
// first NUL; what follows it, in reserved fields and in padding is ignored.
//
// The two structures are what lies in the file. Their natural alignment has no holes but the padding named here.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr uint8_t kPfwLogHead = 0xEF;
inline constexpr uint8_t kPfwLogRear = 0xFE;
inline constexpr std::size_t kPfwLogHostBytes = 65;
inline constexpr std::size_t kPfwLogNameBytes = 260;
inline constexpr std::size_t kPfwLogInfoCharacters = 128;

// Version 0: addresses as IPv4 octets, in network order.
struct SWRB_PFW_LOG_ITEM_V0 {
    uint8_t byHead;       // kPfwLogHead
    uint8_t byDirection;  // the agent's code
    uint16_t wPort;
    uint32_t dwTime;  // seconds since 1970-01-01 00:00 UTC, unsigned
    uint8_t dwLocalIP[4];
    uint8_t dwRemoteIP[4];
    char szPVName[kPfwLogNameBytes];  // path of the process
    uint8_t reserved[260];
    wchar_t wszPVInfo[kPfwLogInfoCharacters];  // more about the process
    uint16_t wProtocol;                        // the agent's codes, like wType and wSubType
    uint16_t wType;
    uint16_t wSubType;
    uint8_t byRear;  // kPfwLogRear
    uint8_t padding;
};

// Version 1: addresses as text, so that IPv6 fits. Fields of the same name mean the same.
struct SWRB_PFW_LOG_ITEM {
    uint8_t byHead;
    uint8_t byDirection;
    uint16_t wPort;
    uint32_t dwTime;
    uint8_t reserved1[8];
    char szLocalHost[kPfwLogHostBytes];
    char szRemoteHost[kPfwLogHostBytes];
    char szPVName[kPfwLogNameBytes];
    uint8_t reserved2[260];
    wchar_t wszPVInfo[kPfwLogInfoCharacters];
    uint16_t wProtocol;
    uint16_t wType;
    uint16_t wSubType;
    uint8_t byRear;
    uint8_t padding[3];
};

static_assert(sizeof(wchar_t) == 2);
static_assert(sizeof(SWRB_PFW_LOG_ITEM_V0) == 800 && offsetof(SWRB_PFW_LOG_ITEM_V0, wszPVInfo) == 536 &&
              offsetof(SWRB_PFW_LOG_ITEM_V0, byRear) == 798);
static_assert(sizeof(SWRB_PFW_LOG_ITEM) == 932 && offsetof(SWRB_PFW_LOG_ITEM, szPVName) == 146 &&
              offsetof(SWRB_PFW_LOG_ITEM, wszPVInfo) == 666 && offsetof(SWRB_PFW_LOG_ITEM, byRear) == 928);

namespace wrb {

enum class PfwLogVersion : int32_t { kUnknown = -1, kV0 = 0, kV1 = 1 };

constexpr uint32_t PfwLogRecordSize(PfwLogVersion version) {
    return version == PfwLogVersion::kV0 ? sizeof(SWRB_PFW_LOG_ITEM_V0) : sizeof(SWRB_PFW_LOG_ITEM);
}

// What the size of a file says of its version. kUnknown: it is a multiple of both records' sizes, so that only the
// markers of the first record can tell; an empty file is of version 0, and a size that fits neither is of version 1.
constexpr PfwLogVersion PfwLogVersionOfSize(uint32_t bytes) {
    if (bytes % sizeof(SWRB_PFW_LOG_ITEM_V0) != 0) {
        return PfwLogVersion::kV1;
    }
    return bytes != 0 && bytes % sizeof(SWRB_PFW_LOG_ITEM) == 0 ? PfwLogVersion::kUnknown : PfwLogVersion::kV0;
}

// The marker pair, a record's only integrity check.
template <typename Item>
constexpr bool HasPfwLogMarkers(const Item& item) {
    return item.byHead == kPfwLogHead && item.byRear == kPfwLogRear;
}

}  // namespace wrb
