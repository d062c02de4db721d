// The records of behaviour monitoring, application control and device control, as they travel in messages.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "BundleRecord.h"

// One behaviour policy. Its id is compared exactly.
//
//   text policyId; u32 action; bool enable
struct tagVEXORPolicyItem : ISerializable {
    std::wstring policyId;
    uint32_t action = 0;
    bool enable = false;

    void Deserialize(ISerializer& serializer) override {
        policyId.clear();
        serializer.GetSerializer() >> policyId >> action >> enable;
    }
    void Serialize(ISerializer& serializer) const override {
        serializer.GetSerializer() << policyId << action << enable;
    }
    void Clear() override { *this = {}; }
};

namespace wrb {

// ---- a program that behaviour monitoring leaves alone ----

struct ExceptionValues {
    std::wstring imagePath;
};

inline constexpr BundleRow<ExceptionValues> kExceptionRows[] = {
    TextRow(L"ImagePath%d", &ExceptionValues::imagePath, nullptr),
};

template <>
inline constexpr Bundle<ExceptionValues> kBundle<ExceptionValues> = {.rows = kExceptionRows};

// ---- the switches of the engine ----

struct EngineValues {
    uint32_t flags = 0;
};

inline constexpr BundleRow<EngineValues> kEngineRows[] = {
    BitRow(L"Enable", &EngineValues::flags, nullptr, 0x1),
    BitRow(L"EnableBM", &EngineValues::flags, nullptr, 0x2),
    BitRow(L"EnableTD", &EngineValues::flags, nullptr, 0x4),
    BitRow(L"EnableTDC", &EngineValues::flags, nullptr, 0x8),
    BitRow(L"EnableADC", &EngineValues::flags, nullptr, 0x10),
    BitRow(L"EnableSRP", &EngineValues::flags, nullptr, 0x20),
    BitRow(L"EnableDRE", &EngineValues::flags, nullptr, 0x40),
    BitRow(L"EnableUMH", &EngineValues::flags, nullptr, 0x80),
    BitRow(L"EnableUMHExploit", &EngineValues::flags, nullptr, 0x100),
};

template <>
inline constexpr Bundle<EngineValues> kBundle<EngineValues> = {.rows = kEngineRows};

// ---- application control: programs that it judges, programs that it approves ----

struct ExecutableValues {
    std::wstring item;
    uint32_t type = 0;
};

inline constexpr BundleRow<ExecutableValues> kExecutableRows[] = {
    TextRow(L"ExecutableItem%d", &ExecutableValues::item, nullptr),
    IntRow(L"ExecutableType%d", &ExecutableValues::type, nullptr),
};

template <>
inline constexpr Bundle<ExecutableValues> kBundle<ExecutableValues> = {.rows = kExecutableRows};

struct ApprovedValues {
    std::wstring item;
};

inline constexpr BundleRow<ApprovedValues> kApprovedRows[] = {
    TextRow(L"ApprovedItem%d", &ApprovedValues::item, nullptr),
};

template <>
inline constexpr Bundle<ApprovedValues> kBundle<ApprovedValues> = {.rows = kApprovedRows};

// ---- device control: one rule of a policy ----

struct DeviceRuleValues {
    uint32_t enable = 0;
    uint32_t action = 0;
    std::wstring policyId;
    uint32_t type = 0;
    std::wstring item;
};

inline constexpr BundleRow<DeviceRuleValues> kDeviceRuleRows[] = {
    BitRow(L"Enable%d", &DeviceRuleValues::enable, nullptr, 0x1),
    IntRow(L"Action%d", &DeviceRuleValues::action, nullptr),
    TextRow(L"PolicyId%d", &DeviceRuleValues::policyId, nullptr),
    IntRow(L"Type%d", &DeviceRuleValues::type, nullptr),
    TextRow(L"Item%d", &DeviceRuleValues::item, nullptr),
};

template <>
inline constexpr Bundle<DeviceRuleValues> kBundle<DeviceRuleValues> = {.rows = kDeviceRuleRows};

}  // namespace wrb

using tagVEXORDacExceptionItem = wrb::BundleRecord<wrb::ApprovedValues>;

// A policy of device control.
//
//   text guid, users ("|" between them); array of rules; bool popAlert
struct tagVEXORSectionItem : ISerializable {
    std::wstring guid;
    std::wstring users;
    std::vector<wrb::BundleRecord<wrb::DeviceRuleValues>> rules;
    bool popAlert = false;

    void Deserialize(ISerializer& serializer) override {
        Clear();
        serializer.GetSerializer() >> guid >> users >> rules >> popAlert;
    }
    void Serialize(ISerializer& serializer) const override {
        serializer.GetSerializer() << guid << users << rules << popAlert;
    }
    void Clear() override { *this = {}; }
};
