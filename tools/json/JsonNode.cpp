#include "JsonNode.h"

#include <algorithm>
#include <charconv>

#include "Text.h"
#include "VisibleText.h"

namespace wrb {
namespace {

constexpr std::size_t kTextCharacters = 65535;
constexpr int64_t kLargestNumber = UINT32_MAX;

std::optional<uint32_t> ParseHex(std::string_view text) {
    uint32_t number = 0;
    if (!text.starts_with("0x") && !text.starts_with("0X")) {
        return std::nullopt;
    }
    text.remove_prefix(2);
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

}  // namespace

void JsonNode::Fail(const std::string& what) const {
    const std::string place = WideToUtf8(VisibleText(Utf8ToWide(m_place)));  // a key may hold anything
    throw SeedError((place.empty() ? "the file" : place) + ": " + what);
}

JsonNode JsonNode::At(const std::string& key, const Json::Value& value) const {
    return JsonNode(value, m_place.empty() ? key : m_place + "." + key);
}

void JsonNode::RequireObject() const {
    if (!m_value->isObject()) {
        Fail("must be an object in braces");
    }
}

std::optional<JsonNode> JsonNode::Member(std::string_view key) const {
    RequireObject();
    const Json::Value* member = m_value->find(key.data(), key.data() + key.size());
    return member != nullptr ? std::optional(At(std::string(key), *member)) : std::nullopt;
}

JsonNode JsonNode::Required(std::string_view key) const {
    const std::optional<JsonNode> member = Member(key);
    if (!member) {
        Fail("\"" + std::string(key) + "\" is missing");
    }
    return *member;
}

void JsonNode::ForEachMember(const std::function<void(const std::string&, const JsonNode&)>& visit) const {
    RequireObject();
    for (auto member = m_value->begin(); member != m_value->end(); ++member) {
        visit(member.name(), At(member.name(), *member));
    }
}

void JsonNode::RefuseUnknown(const std::function<bool(std::string_view)>& isKnown) const {
    ForEachMember([&](const std::string& key, const JsonNode& member) {
        if (!isKnown(key)) {
            member.Fail("unknown key");
        }
    });
}

void JsonNode::RefuseUnknown(std::initializer_list<std::string_view> known) const {
    RefuseUnknown([&](std::string_view key) { return std::ranges::find(known, key) != known.end(); });
}

void JsonNode::ForEachElement(const std::function<void(const JsonNode&)>& visit) const {
    if (!m_value->isArray()) {
        Fail("must be a list in brackets");
    }
    for (Json::ArrayIndex i = 0; i < m_value->size(); ++i) {
        visit(JsonNode((*m_value)[i], m_place + "[" + std::to_string(i) + "]"));
    }
}

bool JsonNode::Bool() const {
    if (!m_value->isBool()) {
        Fail("must be true or false");
    }
    return m_value->asBool();
}

uint32_t JsonNode::Number(int64_t smallest) const {
    if (m_value->isString()) {
        if (const std::optional<uint32_t> number = ParseHex(m_value->asString())) {
            return *number;
        }
        Fail("must be a whole number, or a hexadecimal text such as \"0x1F\" of at most eight digits");
    }
    if (!m_value->isInt64() || m_value->asInt64() < smallest || m_value->asInt64() > kLargestNumber) {
        Fail(smallest < 0 ? "must be a whole number of 32 bits" : "must be a whole number of 32 bits, not negative");
    }
    return static_cast<uint32_t>(m_value->asInt64());
}

std::wstring JsonNode::AnyText() const {
    if (!m_value->isString()) {
        Fail("must be a text in quotation marks");
    }
    std::wstring text = Utf8ToWide(m_value->asString());
    if (text.size() > kTextCharacters) {
        Fail("is longer than 65535 characters");
    }
    if (text.find(L'\0') != std::wstring::npos) {
        Fail("holds a NUL, where the text would end");
    }
    return text;
}

std::wstring JsonNode::Text() const {
    std::wstring text = AnyText();
    if (text.find_first_of(L"\t\r\n") != std::wstring::npos) {
        Fail("holds a TAB or a line end, which would split the answer to an agent");
    }
    return text;
}

}  // namespace wrb
