#include "XmlElement.h"

#include <algorithm>
#include <cstdint>
#include <pugixml.hpp>

#include "Text.h"

namespace wrb {
namespace {

// Without parse_escapes: references are decoded here, where an unknown one is an error. Nodes that are dropped without
// these options are asked for, so that they are seen where they must not be.
constexpr unsigned kParseOptions =
    pugi::parse_cdata | pugi::parse_declaration | pugi::parse_doctype | pugi::parse_fragment;

constexpr struct {
    std::wstring_view name;
    wchar_t character;
} kEntities[] = {{L"amp", L'&'}, {L"apos", L'\''}, {L"gt", L'>'}, {L"lt", L'<'}, {L"quot", L'"'}};

bool IsXmlCharacter(uint32_t c) {
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c < 0xD800) || (c >= 0xE000 && c < 0xFFFE) ||
           (c >= 0x10000 && c < 0x110000);
}

bool IsHigh(wchar_t c) {
    return c >= 0xD800 && c < 0xDC00;
}
bool IsLow(wchar_t c) {
    return c >= 0xDC00 && c < 0xE000;
}

void CheckCharacters(std::wstring_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsHigh(text[i]) && i + 1 < text.size() && IsLow(text[i + 1])) {
            ++i;
        } else if (!IsXmlCharacter(text[i])) {
            throw XmlError("a character that XML does not allow");
        }
    }
}

uint32_t DigitOf(wchar_t c) {
    return c >= L'0' && c <= L'9'   ? c - L'0'
           : c >= L'a' && c <= L'f' ? c - L'a' + 10
           : c >= L'A' && c <= L'F' ? c - L'A' + 10
                                    : 16;
}

// The number of "#65" or "#x41"; 0, which is no character, for anything else.
uint32_t CharacterNumber(std::wstring_view reference) {
    const bool isHex = reference.starts_with(L"#x");
    const uint32_t base = isHex ? 16 : 10;
    uint32_t number = 0;
    for (const wchar_t c : reference.substr(isHex ? 2 : 1)) {
        const uint32_t digit = DigitOf(c);
        if (digit >= base || number > 0x10FFFF) {
            return 0;
        }
        number = number * base + digit;
    }
    return number;
}

// `reference` is what stands between "&" and ";".
void AppendReference(std::wstring& out, std::wstring_view reference) {
    const auto entity = std::ranges::find(kEntities, reference, [](const auto& row) { return row.name; });
    if (entity != std::end(kEntities)) {
        out += entity->character;
        return;
    }
    const uint32_t number = reference.starts_with(L'#') ? CharacterNumber(reference) : 0;
    if (!IsXmlCharacter(number)) {
        throw XmlError("an unknown reference");
    }
    if (number < 0x10000) {
        out += static_cast<wchar_t>(number);
    } else {
        out += static_cast<wchar_t>(0xD800 + ((number - 0x10000) >> 10));
        out += static_cast<wchar_t>(0xDC00 + ((number - 0x10000) & 0x3FF));
    }
}

std::wstring Decoded(const char* raw) {
    const std::wstring text = Utf8ToWide(raw);
    std::wstring out;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != L'&') {
            out += text[at];
            continue;
        }
        const std::size_t end = std::min(text.size(), text.find(L';', at));
        AppendReference(out, std::wstring_view(text).substr(at + 1, end - at - 1));
        at = end;
    }
    return out;
}

void TakeAttributes(const pugi::xml_node& node, XmlElement& element) {
    for (const pugi::xml_attribute attribute : node.attributes()) {
        const std::wstring name = Utf8ToWide(attribute.name());
        if (element.attributes.size() == kMostXmlAttributes) {
            throw XmlError("too many attributes");
        }
        if (std::ranges::find(element.attributes, name, &std::pair<std::wstring, std::wstring>::first) !=
            element.attributes.end()) {
            throw XmlError("an attribute that comes twice");
        }
        if (std::string_view(attribute.value()).find('<') != std::string_view::npos) {
            throw XmlError("a \"<\" in an attribute");
        }
        element.attributes.emplace_back(name, Decoded(attribute.value()));
    }
}

void CheckText(const char* raw) {
    if (std::string_view(raw).find("]]>") != std::string_view::npos) {
        throw XmlError("a \"]]>\" in a text");
    }
    Decoded(raw);
}

XmlElement TakeElement(const pugi::xml_node& node, unsigned level) {
    if (level > kMostXmlLevels) {
        throw XmlError("too many levels");
    }
    XmlElement element;
    element.name = Utf8ToWide(node.name());
    TakeAttributes(node, element);
    for (const pugi::xml_node child : node.children()) {
        if (child.type() == pugi::node_element) {
            element.children.push_back(TakeElement(child, level + 1));
        } else if (child.type() == pugi::node_pcdata) {
            CheckText(child.value());
        } else if (child.type() == pugi::node_declaration) {
            throw XmlError("a declaration in an element");
        }
    }
    return element;
}

// The document's one element. Before it there may be a declaration, which must come first.
pugi::xml_node RootOf(const pugi::xml_document& document) {
    pugi::xml_node root;
    for (const pugi::xml_node node : document.children()) {
        if (node.type() == pugi::node_doctype) {
            throw XmlError("a document type");
        }
        const bool isDeclaration = node.type() == pugi::node_declaration && node == document.first_child();
        if (!isDeclaration && (node.type() != pugi::node_element || root)) {
            throw XmlError("more than one element");
        }
        root = isDeclaration ? root : node;
    }
    if (!root) {
        throw XmlError("no element");
    }
    return root;
}

}  // namespace

std::wstring_view XmlElement::Attribute(std::wstring_view attribute) const {
    for (const auto& [key, value] : attributes) {
        if (key == attribute) {
            return value;
        }
    }
    return {};
}

const XmlElement& XmlElement::Child(std::wstring_view child) const {
    static const XmlElement none;
    const auto found = std::ranges::find(children, child, &XmlElement::name);
    return found == children.end() ? none : *found;
}

XmlElement ParseXml(std::wstring_view text) {
    if (text.size() * sizeof(char16_t) > kMostXmlBytes) {
        throw XmlError("more than 1 MiB");
    }
    CheckCharacters(text);
    const std::string bytes = WideToUtf8(text);
    pugi::xml_document document;
    const pugi::xml_parse_result result =
        document.load_buffer(bytes.data(), bytes.size(), kParseOptions, pugi::encoding_utf8);
    if (!result) {
        throw XmlError(result.description());
    }
    return TakeElement(RootOf(document), 1);
}

}  // namespace wrb
