// XML documents of other programs, read without trust.
//
// Read are elements and attributes. Texts between the tags, comments and processing instructions must be well formed
// and are dropped. Refused are a document type, and with it every entity but the five that XML defines; more than
// kMostXmlBytes; elements that nest deeper than kMostXmlLevels or have more than kMostXmlAttributes. Character
// references are allowed.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace wrb {

inline constexpr std::size_t kMostXmlBytes = 1u << 20;  // as UTF-16
inline constexpr unsigned kMostXmlLevels = 16;          // the root element is level 1
inline constexpr std::size_t kMostXmlAttributes = 64;

// A document that is refused. The text says why.
class XmlError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct XmlElement {
    std::wstring name;
    std::vector<std::pair<std::wstring, std::wstring>> attributes;  // in their order, each name once
    std::vector<XmlElement> children;

    // The value; empty for an attribute that is not there.
    std::wstring_view Attribute(std::wstring_view attribute) const;

    // The first child of that name; one without content when there is none.
    const XmlElement& Child(std::wstring_view child) const;

    template <typename Visit>
    void ForEachChild(std::wstring_view child, Visit visit) const {
        for (const XmlElement& element : children) {
            if (element.name == child) {
                visit(element);
            }
        }
    }
};

// The root element. Throws XmlError.
XmlElement ParseXml(std::wstring_view text);

}  // namespace wrb
