// The values of the setting bundles, as the database keeps them and as an agent's sections show them.
//
// Fields() of each lists its members in the order in which records and containers declare them; that is the order on
// the wire. The numbers are shown signed. SettingTables.h says which field feeds which key.
#pragma once

#include <cstdint>
#include <string>
#include <tuple>

namespace wrb {

// Web threat protection. A list of addresses is one text with "|" between the items.
struct WtpValues {
    static constexpr uint32_t kEnablePolicyIn = 0x1;  // bits of flags; "in" and "out" of the office
    static constexpr uint32_t kEnablePolicyOut = 0x2;
    static constexpr uint32_t kSendLogIn = 0x4;
    static constexpr uint32_t kSendLogOut = 0x8;

    uint32_t flags = 0;
    uint32_t securityLevelIn = 0;
    uint32_t securityLevelOut = 0;
    uint32_t filterFlagIn = 0;
    uint32_t filterFlagOut = 0;
    uint32_t queryModeIn = 0;
    uint32_t ratingLevelIn = 0;
    uint32_t ratingLevelOut = 0;
    std::wstring approvedIn;
    std::wstring approvedOut;
    std::wstring blockedIn;
    std::wstring blockedOut;

    static constexpr auto Fields() {
        using V = WtpValues;
        return std::tuple(&V::flags, &V::securityLevelIn, &V::securityLevelOut, &V::filterFlagIn, &V::filterFlagOut,
                          &V::queryModeIn, &V::ratingLevelIn, &V::ratingLevelOut, &V::approvedIn, &V::approvedOut,
                          &V::blockedIn, &V::blockedOut);
    }
};

// Network content inspection.
struct NcieValues {
    static constexpr uint32_t kEnableRR = 0x1;  // bits of flags
    static constexpr uint32_t kEnableCNP = 0x2;
    static constexpr uint32_t kEnableGC = 0x4;

    uint32_t flags = 0;
    uint32_t actionForCNP = 0;
    uint32_t actionForRR = 0;
    uint32_t actionForUserDefine = 0;
    uint32_t actionForSBA = 0;

    static constexpr auto Fields() {
        using V = NcieValues;
        return std::tuple(&V::flags, &V::actionForCNP, &V::actionForRR, &V::actionForUserDefine, &V::actionForSBA);
    }
};

// Sample submission: made from a bit of the agent's privilege words, never stored by itself.
struct SampleSubmissionValues {
    static constexpr uint32_t kEnable = 0x1;  // bit of flags

    uint32_t flags = 0;

    static constexpr auto Fields() { return std::tuple(&SampleSubmissionValues::flags); }
};

// The Sablex feature. Both lists are one text each, with "|" between the items.
struct SablexValues {
    static constexpr uint32_t kEnableSablex = 0x1;  // bits of flags
    static constexpr uint32_t kEnableFile = 0x2;
    static constexpr uint32_t kEnableProcess = 0x4;

    uint32_t flags = 0;
    uint32_t actionForFile = 0;
    uint32_t actionForProcess = 0;
    std::wstring exceptions;
    std::wstring processNames;

    static constexpr auto Fields() {
        using V = SablexValues;
        return std::tuple(&V::flags, &V::actionForFile, &V::actionForProcess, &V::exceptions, &V::processNames);
    }
};

// Aggressive scanning.
struct AggrScanValues {
    static constexpr uint32_t kEnableMitre = 0x1;  // bit of cfg

    uint32_t cfg = 0;
    uint32_t detectFlag = 0;
    uint32_t detectFlagForIProduct = 0;

    static constexpr auto Fields() {
        using V = AggrScanValues;
        return std::tuple(&V::cfg, &V::detectFlag, &V::detectFlagForIProduct);
    }
};

// One file that an agent is to put back after its analysis.
struct FARestoreValues {
    std::wstring sha1Hash;
    std::wstring taskId;
    std::wstring itemId;
    std::wstring fileDir;
    std::wstring fileName;

    static constexpr auto Fields() {
        using V = FARestoreValues;
        return std::tuple(&V::sha1Hash, &V::taskId, &V::itemId, &V::fileDir, &V::fileName);
    }
};

// One policy that the central-management agent has put on the agent.
struct PolicyTrackingValues {
    std::wstring name;
    std::wstring lastUpdateTime;  // as the database writes it
    std::wstring policyOwner;
    std::wstring policyTypeId;

    static constexpr auto Fields() {
        using V = PolicyTrackingValues;
        return std::tuple(&V::name, &V::lastUpdateTime, &V::policyOwner, &V::policyTypeId);
    }
};

}  // namespace wrb
