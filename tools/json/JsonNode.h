// A JSON value that knows its place in the document, for files that people write: every error names the place.
#pragma once

#include <json/value.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace wrb {

// The text is "PLACE: what is wrong", as in: agents[2].scan.manual.OleLayer: must be a whole number.
class SeedError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class JsonNode {
  public:
    // `value` must outlive the node; the root's place is empty.
    explicit JsonNode(const Json::Value& value, std::string place = {}) : m_value(&value), m_place(std::move(place)) {}

    [[noreturn]] void Fail(const std::string& what) const;  // throws SeedError

    // An object's members. Reading one that is not there gives nothing.
    std::optional<JsonNode> Member(std::string_view key) const;
    JsonNode Required(std::string_view key) const;
    void ForEachMember(const std::function<void(const std::string& key, const JsonNode& value)>& visit) const;
    void RefuseUnknown(const std::function<bool(std::string_view key)>& isKnown) const;
    void RefuseUnknown(std::initializer_list<std::string_view> known) const;

    void ForEachElement(const std::function<void(const JsonNode& element)>& visit) const;

    bool Bool() const;

    // 32 bits, signed or not, as their unsigned pattern: a whole number of at least `smallest`, or a hexadecimal text
    // such as "0x1C507".
    uint32_t Number(int64_t smallest = INT32_MIN) const;

    // At most 65535 characters, and no NUL.
    std::wstring AnyText() const;

    // For an agent: TAB, CR and LF are refused too, because the answers cannot carry them.
    std::wstring Text() const;

  private:
    void RequireObject() const;
    JsonNode At(const std::string& key, const Json::Value& value) const;

    const Json::Value* m_value;
    std::string m_place;
};

}  // namespace wrb
