// A record with one field of every kind, and the helpers that the tests of this folder share.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "MsgSerializer.h"

using Bytes = std::vector<uint8_t>;

struct tagSampleItem : ISerializable {
    uint16_t key;
    std::wstring text;

    explicit tagSampleItem(uint16_t itemKey = 0, std::wstring itemText = {})
        : key(itemKey), text(std::move(itemText)) {}
    void Serialize(ISerializer& serializer) const override { serializer.GetSerializer() << key << text; }
    void Deserialize(ISerializer& serializer) override { serializer.GetSerializer() >> key >> text; }
};

struct tagSampleRecord : ISerializable {
    uint32_t number = 0;
    int32_t signedNumber = 0;
    bool flag = false;
    std::wstring text;
    Bytes block;
    std::vector<tagSampleItem> items;

    void Serialize(ISerializer& serializer) const override {
        serializer.GetSerializer() << number << signedNumber << flag << text << block << items;
    }
    void Deserialize(ISerializer& serializer) override {
        serializer.GetSerializer() >> number >> signedNumber >> flag >> text >> block >> items;
    }
};

inline tagSampleRecord Sample() {
    tagSampleRecord record;
    record.number = 0x89ABCDEF;
    record.signedNumber = -2;
    record.flag = true;
    record.text = L"A\u00e9";
    record.block = {1, 2, 3};  // an odd length: what follows is not aligned
    record.items = {tagSampleItem(7, L"x"), tagSampleItem(8)};
    return record;
}

// "04 00 FF" as bytes.
inline Bytes FromHex(std::string_view hex) {
    std::istringstream words{std::string(hex)};
    Bytes bytes;
    for (std::string word; words >> word;) {
        bytes.push_back(static_cast<uint8_t>(std::stoul(word, nullptr, 16)));
    }
    return bytes;
}

// Every cut of the bytes, and every byte replaced by the values that upset lengths, counts and flags most.
inline std::vector<Bytes> CutsAndMutations(const Bytes& whole) {
    std::vector<Bytes> all;
    for (auto at = whole.begin(); at != whole.end(); ++at) {
        all.emplace_back(whole.begin(), at);
        for (const char value : "\x01\x02\x03\x11\x7F\x80\xFF") {
            all.push_back(whole);
            all.back()[static_cast<std::size_t>(at - whole.begin())] = static_cast<uint8_t>(value);
        }
    }
    return all;
}

inline Bytes BytesOf(const CMsgSerializer& message) {
    return Bytes(message.Data(), message.Data() + message.GetSize());
}

inline bool Load(CMsgSerializer& message, const Bytes& bytes) {
    return message.Load(bytes.data(), static_cast<uint32_t>(bytes.size()));
}

inline constexpr std::string_view kSampleHex =
    "04 00 00 00  EF CD AB 89 "
    "04 00 00 00  FE FF FF FF "
    "01 00 00 00  01 00 00 00 "
    "06 00 00 00  41 00 E9 00 00 00 "
    "03 00 00 00  01 02 03 "
    "02 00 00 00 "
    "02 00 00 00  07 00 "
    "04 00 00 00  78 00 00 00 "
    "02 00 00 00  08 00 "
    "02 00 00 00  00 00 ";
