// Behaviour-monitor settings.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ISerializer.h"
#include "Serializer.h"
#include "VexorRecords.h"

namespace wrb {

// DBV2_GET_VEXOR_CUSTOM_BM_CFG: the policies that differ from the product's defaults.
//
//   array of tagVEXORPolicyItem
struct CustomBmConfig : ISerializable {
    std::vector<tagVEXORPolicyItem> policies;

    void Deserialize(ISerializer& serializer) override { serializer.GetSerializer() >> policies; }
    void Serialize(ISerializer& serializer) const override { serializer.GetSerializer() << policies; }
    void Clear() override { policies.clear(); }
};

}  // namespace wrb

// The policy document, empty for an agent without one. False, with a log line, when the request failed.
bool dbGetVexorBmCfgW(const wchar_t* uid, std::wstring& text, uint32_t number = 0) noexcept;

// Do not use `cfg` after a false. Waits at most 600 seconds.
bool dbGetVexorCustomBmCfgW(const wchar_t* uid, wrb::CustomBmConfig& cfg) noexcept;
