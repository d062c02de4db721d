// A bundle's values as a record that travels: its fields in the order of ForEachField, numbers as 32-bit integers,
// texts as texts.
//
// Read without trust: a cut or mutated message throws CIPCMsgBufferException and leaves the values with whatever had
// been read. Reading sets every field anew.
#pragma once

#include <type_traits>
#include <vector>

#include "Bundles.h"
#include "ISerializer.h"
#include "Serializer.h"

namespace wrb {

template <typename Values>
struct BundleRecord final : ISerializable, Values {
    BundleRecord() = default;
    explicit BundleRecord(const Values& values) : Values(values) {}

    void Deserialize(ISerializer& serializer) override {
        Clear();  // a text of length 0 would leave its target as it was
        ForEachField<Values>(static_cast<Values&>(*this),
                             [&](const auto& /*row*/, auto& field) { serializer.GetSerializer() >> field; });
    }
    void Serialize(ISerializer& serializer) const override {
        ForEachField<Values>(static_cast<const Values&>(*this),
                             [&](const auto& /*row*/, const auto& field) { serializer.GetSerializer() << field; });
    }
    void Clear() override { static_cast<Values&>(*this) = Values(); }
};

// Any number of records: an array.
template <typename Values>
struct BundleRecordList final : ISerializable {
    std::vector<BundleRecord<Values>> items;

    void Deserialize(ISerializer& serializer) override { serializer.GetSerializer() >> items; }
    void Serialize(ISerializer& serializer) const override { serializer.GetSerializer() << items; }
    void Clear() override { items.clear(); }
};

// What the database answers for one agent.
template <typename Values>
using BundleContent = std::conditional_t<kHasItems<Values>, BundleRecordList<Values>, BundleRecord<Values>>;

}  // namespace wrb

using tagClientWCSConfig = wrb::BundleRecord<wrb::WtpValues>;
using tagFARestoreItem = wrb::BundleRecord<wrb::FARestoreValues>;
using tagClientNCIECfg = wrb::BundleRecord<wrb::NcieValues>;
using tagClientSampleSubmissionCfg = wrb::BundleRecord<wrb::SampleSubmissionValues>;
using tagClientSablexConfig = wrb::BundleRecord<wrb::SablexValues>;
using tagClientAggrScanConfig = wrb::BundleRecord<wrb::AggrScanValues>;
