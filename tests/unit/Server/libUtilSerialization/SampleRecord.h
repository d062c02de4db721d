// A record with one field of every kind, and the helpers that the tests of this folder share.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Serializer.h"

using Bytes = std::vector<uint8_t>;

struct tagSampleItem : ISerializable {
    uint16_t key = 0;
    std::wstring text;

    tagSampleItem() = default;
    tagSampleItem(uint16_t itemKey, std::wstring itemText) : key(itemKey), text(std::move(itemText)) {}

    void Serialize(ISerializer& serializer) const override { serializer.GetSerializer() << key << text; }
    void Deserialize(ISerializer& serializer) override { serializer.GetSerializer() >> key >> text; }
    bool operator==(const tagSampleItem& other) const { return key == other.key && text == other.text; }
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
    bool operator==(const tagSampleRecord& other) const {
        return number == other.number && signedNumber == other.signedNumber && flag == other.flag &&
               text == other.text && block == other.block && items == other.items;
    }
};

inline tagSampleRecord Sample() {
    tagSampleRecord record;
    record.number = 0x89ABCDEF;
    record.signedNumber = -2;
    record.flag = true;
    record.text = L"A\u00e9";
    record.block = {1, 2, 3};  // an odd length: what follows is not aligned
    record.items = {{7, L"x"}, {8, L""}};
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

// Values that upset lengths, counts and flags most.
inline constexpr uint8_t kMutations[] = {0x00, 0x01, 0x02, 0x03, 0x11, 0x7F, 0x80, 0xFF};

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
