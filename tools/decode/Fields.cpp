#include "Fields.h"

#include <algorithm>
#include <cstring>

#include "Bytes.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::size_t kShownBytes = 32;
constexpr std::size_t kWord = 4;
constexpr std::size_t kMostFields = 1'000'000;

}  // namespace

std::wstring HexText(std::span<const uint8_t> bytes) {
    std::wstring text;
    for (const uint8_t byte : bytes.first(std::min(bytes.size(), kShownBytes))) {
        text += FormatWide(text.empty() ? L"%02X" : L" %02X", byte);
    }
    return text + (bytes.size() > kShownBytes ? L" ..." : L"");
}

FieldCursor FieldCursor::TakePart(std::size_t bytes, std::string_view prefix) {
    if (bytes > m_rest.size()) {
        Fail(std::string(prefix) + "ends too early: " + std::to_string(bytes) + " bytes are announced, " +
             std::to_string(m_rest.size()) + " are left");
    }
    FieldCursor part = *this;
    part.m_rest = m_rest.first(bytes);
    part.m_prefix += prefix;
    Skip(bytes);
    return part;
}

void FieldCursor::Take(std::string_view name, std::size_t bytes, std::wstring value) {
    Require(bytes, name);
    if (m_decoded->fields.size() >= kMostFields) {
        Fail("has more than " + std::to_string(kMostFields) + " fields; the others are not shown");
    }
    m_decoded->fields.push_back({m_offset, bytes, m_prefix + std::string(name), std::move(value)});
    Skip(bytes);
}

void FieldCursor::Skip(std::size_t bytes) {
    Require(bytes, "a separator");
    m_rest = m_rest.subspan(bytes);
    m_offset += bytes;
}

uint64_t FieldCursor::TakeNumber(std::string_view name, std::size_t bytes, bool isHex) {
    Require(bytes, name);
    uint64_t value = 0;
    std::memcpy(&value, m_rest.data(), bytes);
    Take(name, bytes, isHex ? FormatWide(L"0x%08X", static_cast<unsigned>(value)) : std::to_wstring(value));
    return value;
}

void FieldCursor::TakeBytes(std::string_view name, std::size_t bytes) {
    Require(bytes, name);
    Take(name, bytes, HexText(m_rest.first(bytes)));
}

void FieldCursor::TakeRest(std::string_view name) {
    if (!AtEnd()) {
        TakeBytes(name, m_rest.size());
    }
}

uint32_t FieldCursor::TakeInteger(std::string_view name) {
    const uint32_t value = WordAt(kWord, name);
    const auto number = static_cast<int32_t>(value);
    Take(name, 2 * kWord,
         number < 0 || number > 9 ? FormatWide(L"%d (0x%08X)", number, value) : std::to_wstring(number));
    return value;
}

bool FieldCursor::TakeBool(std::string_view name) {
    const bool value = WordAt(kWord, name) != 0;
    Take(name, 2 * kWord, value ? L"true" : L"false");
    return value;
}

std::wstring FieldCursor::TakeText(std::string_view name) {
    const std::size_t bytes = WordAt(0, name);
    Require(kWord + bytes, name);
    std::wstring text = WideTextOf(m_rest.subspan(kWord, bytes));
    text.resize(text.size() - std::min<std::size_t>(text.size(), 1));
    Take(name, kWord + bytes, text);
    return text;
}

uint32_t FieldCursor::TakeCount(std::string_view name) {
    const uint32_t count = WordAt(0, name);
    Take(name, kWord, std::to_wstring(count));
    return count;
}

void FieldCursor::Fail(const std::string& text) const {
    throw DecodeProblem(m_prefix + text);
}

uint32_t FieldCursor::WordAt(std::size_t offset, std::string_view name) const {
    Require(offset + kWord, name);
    uint32_t word = 0;
    std::memcpy(&word, m_rest.data() + offset, kWord);
    return word;
}

void FieldCursor::Require(std::size_t bytes, std::string_view name) const {
    if (bytes > m_rest.size()) {
        Fail(std::string(name) + " needs " + std::to_string(bytes) + " bytes; " + std::to_string(m_rest.size()) +
             " are left");
    }
}

}  // namespace wrb
