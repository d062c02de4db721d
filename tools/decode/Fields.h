// The fields of a message, and the cursor that finds them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace wrb {

struct DecodedField {
    std::size_t offset = 0;  // in the whole message
    std::size_t bytes = 0;
    std::string name;
    std::wstring value;
};

struct Decoded {
    std::string kind;
    std::vector<DecodedField> fields;  // by their offsets; none overlaps another
    std::string problem;               // what is wrong with the message; empty: all of it is understood
};

// Thrown where a message breaks its format. The text says what is missing.
class DecodeProblem : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Walks over a part of a message and adds a field for all that it takes. Every Take function throws DecodeProblem when
// the part ends before the field does, or the message has a million fields already.
class FieldCursor {
  public:
    FieldCursor(std::span<const uint8_t> whole, Decoded& decoded) : m_rest(whole), m_decoded(&decoded) {}

    std::size_t Offset() const { return m_offset; }
    std::span<const uint8_t> Rest() const { return m_rest; }
    bool AtEnd() const { return m_rest.empty(); }
    Decoded& Target() { return *m_decoded; }

    // A cursor over the next bytes, which this one passes over; the names of its fields begin with `prefix`.
    FieldCursor TakePart(std::size_t bytes, std::string_view prefix);

    // Passes over bytes that belong to no field.
    void Skip(std::size_t bytes);

    // Little-endian numbers of 1 to 8 bytes, shown in decimals; one of 4 bytes with `isHex` in hexadecimal digits.
    uint64_t TakeNumber(std::string_view name, std::size_t bytes, bool isHex = false);
    void TakeBytes(std::string_view name, std::size_t bytes);  // shown as hexadecimal digits
    void TakeRest(std::string_view name);                      // the same for all that is left, unless that is nothing
    void Take(std::string_view name, std::size_t bytes, std::wstring value);

    // ---- the values of binary messages ----

    uint32_t TakeInteger(std::string_view name);  // 32 bits
    bool TakeBool(std::string_view name);
    std::wstring TakeText(std::string_view name);
    uint32_t TakeCount(std::string_view name);  // of an array

    // Throws DecodeProblem with the names of the parts in front.
    [[noreturn]] void Fail(const std::string& text) const;

  private:
    uint32_t WordAt(std::size_t offset, std::string_view name) const;
    void Require(std::size_t bytes, std::string_view name) const;

    std::span<const uint8_t> m_rest;
    Decoded* m_decoded;
    std::size_t m_offset = 0;
    std::string m_prefix;
};

std::wstring HexText(std::span<const uint8_t> bytes);

}  // namespace wrb
