// A bundle's values (BundleValues.h) as a record that travels: its fields in the order of Fields(), numbers as 32-bit
// integers, texts as texts.
//
// Read without trust: a cut or mutated message throws CIPCMsgBufferException and leaves the values with whatever had
// been read. Reading sets every field anew.
#pragma once

#include <tuple>
#include <vector>

#include "ISerializer.h"
#include "Serializer.h"

namespace wrb {

template <typename Values>
struct SettingRecord final : ISerializable, Values {
    SettingRecord() = default;
    explicit SettingRecord(const Values& values) : Values(values) {}

    void Deserialize(ISerializer& serializer) override {
        Clear();  // a text of length 0 would leave its target as it was
        CSerializer& in = serializer.GetSerializer();
        std::apply([&](auto... field) { (in >> ... >> (this->*field)); }, Values::Fields());
    }
    void Serialize(ISerializer& serializer) const override {
        CSerializer& out = serializer.GetSerializer();
        std::apply([&](auto... field) { (out << ... << (this->*field)); }, Values::Fields());
    }
    void Clear() override { static_cast<Values&>(*this) = Values(); }
};

// Any number of records: an array.
template <typename Record>
struct SettingRecordList final : ISerializable {
    std::vector<Record> items;

    void Deserialize(ISerializer& serializer) override { serializer.GetSerializer() >> items; }
    void Serialize(ISerializer& serializer) const override { serializer.GetSerializer() << items; }
    void Clear() override { items.clear(); }
};

}  // namespace wrb
