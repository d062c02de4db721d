// Behaviour-monitor settings.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ISerializer.h"

// What the administrator has set for one behaviour policy.
//
//   text policyId; u32 action; bool enable
struct tagVEXORPolicyItem : ISerializable {
    std::wstring policyId;
    uint32_t action = 0;
    bool enable = false;

    void Deserialize(ISerializer& serializer) override;
    void Serialize(ISerializer& serializer) const override;
    void Clear() override;
};

namespace wrb {

// DBV2_GET_VEXOR_CUSTOM_BM_CFG: the policies that differ from the product's defaults.
//
//   array of tagVEXORPolicyItem
struct CustomBmConfig : ISerializable {
    std::vector<tagVEXORPolicyItem> policies;

    void Deserialize(ISerializer& serializer) override;
    void Serialize(ISerializer& serializer) const override;
    void Clear() override;
};

}  // namespace wrb

// The configuration as one text. False when it could not be had, with a log line.
bool dbGetVexorBmCfgW(const wchar_t* uid, std::wstring& text, uint32_t number = 0) noexcept;

// `cfg` is not to be used after a false. Waits at most 600 seconds.
bool dbGetVexorCustomBmCfgW(const wchar_t* uid, wrb::CustomBmConfig& cfg) noexcept;
