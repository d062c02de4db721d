#include "IniCheck.h"

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <map>

#include "IgnoringCase.h"
#include "NearestName.h"
#include "SettingCatalog.h"
#include "StringProtection.h"
#include "Text.h"
#include "Utf8.h"

namespace wrb {
namespace {

std::wstring_view Trim(std::wstring_view text) {
    const std::size_t first = text.find_first_not_of(L" \t\r");
    return first == text.npos ? std::wstring_view() : text.substr(first, text.find_last_not_of(L" \t\r") - first + 1);
}

std::string Quoted(std::wstring_view text) {
    return "\"" + WideToUtf8(text) + "\"";
}

bool HasOtherThanAscii(std::string_view bytes) {
    return std::ranges::any_of(bytes, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

// One file, line by line.
class IniChecker {
  public:
    IniChecker(IniFile kind, std::string file) : m_kind(kind), m_file(std::move(file)) {}

    std::vector<IniFinding> Check(std::string_view bytes) {
        if (!CheckEncoding(bytes)) {
            return std::move(m_findings);
        }
        const std::wstring text = AnsiToWide(bytes);
        for (std::wstring_view rest = text; !rest.empty();) {
            ++m_line;
            const std::wstring_view line = rest.substr(0, rest.find(L'\n'));
            rest.remove_prefix(std::min(rest.size(), line.size() + 1));
            CheckLine(Trim(line));
        }
        return std::move(m_findings);
    }

  private:
    void Report(bool isError, std::string text) { m_findings.push_back({isError, m_file, m_line, std::move(text)}); }
    void Error(std::string text) { Report(true, std::move(text)); }
    void Warn(std::string text) { Report(false, std::move(text)); }

    // False when the lines cannot be read.
    bool CheckEncoding(std::string_view bytes) {
        if (bytes.starts_with(kUtf8Mark)) {
            Error("begins with a UTF-8 mark: the first section is not found; save it without the mark");
        } else if (bytes.starts_with(kUtf16Mark) || bytes.find('\0') != bytes.npos) {
            Error("is UTF-16 or binary; save it in the system's ANSI code page");
            return false;
        } else if (HasOtherThanAscii(bytes) && IsUtf8(bytes) != (GetACP() == CP_UTF8)) {
            Warn("has characters beyond ASCII that are not in code page " + std::to_string(GetACP()) +
                 ", in which the server reads it");
        }
        return true;
    }

    void CheckLine(std::wstring_view line) {
        if (line.empty() || line.starts_with(L';')) {
            return;
        }
        if (line.starts_with(L'[')) {
            StartSection(Trim(line.substr(1, line.find(L']') - 1)));
        } else if (const std::size_t equals = line.find(L'='); equals == line.npos) {
            Warn(Quoted(line) + " is neither a section, a key nor a comment");
        } else {
            CheckKey(std::wstring(Trim(line.substr(0, equals))), Trim(line.substr(equals + 1)));
        }
    }

    void StartSection(std::wstring_view name) {
        m_inSection = true;
        m_keys.clear();
        m_section = FindIniSection(m_kind, name);
        const auto [place, isNew] = m_sections.try_emplace(std::wstring(name), m_line);
        if (!isNew) {
            Error("the section " + Quoted(name) + " comes again; only the one in line " +
                  std::to_string(place->second) + " counts");
        }
        if (m_section == nullptr) {
            std::vector<std::wstring_view> names;
            for (const IniSection& section : KnownIniSections()) {
                if (section.file == m_kind) {
                    names.push_back(section.name);
                }
            }
            Warn("the server does not read the section " + Quoted(name) + DidYouMean(NearestName(name, names)));
        }
    }

    void CheckKey(const std::wstring& key, std::wstring_view value) {
        if (!m_inSection) {
            Warn(Quoted(key) + " precedes the first section");
            return;
        }
        if (const auto [place, isNew] = m_keys.try_emplace(key, m_line); !isNew) {
            Warn("the key " + Quoted(key) + " comes again; only the one in line " + std::to_string(place->second) +
                 " counts");
        }
        if (m_section == nullptr || m_section->keys.empty()) {
            return;
        }
        const IniKey* const known = FindIniKey(*m_section, key);
        if (known == nullptr) {
            std::vector<std::wstring_view> names;
            std::ranges::transform(m_section->keys, std::back_inserter(names), &IniKey::name);
            Error("[" + WideToUtf8(m_section->name) + "] has no key " + Quoted(key) +
                  DidYouMean(NearestName(key, names)));
        } else {
            CheckValue(*known, key, value);
        }
    }

    void CheckValue(const IniKey& known, const std::wstring& key, std::wstring_view value) {
        if (EqualIgnoringCase(key, kProtectionKeyName) && !ParseProtectionKey(value)) {
            Error(Quoted(key) + " is not 64 hexadecimal digits: the server has no protection key");
        }
        if (known.isText || value.empty()) {
            return;
        }
        if (const std::string wrong = WrongNumber(known, value); !wrong.empty()) {
            Error(Quoted(key) + " " + wrong);
        }
    }

    // What is wrong with a number. The keys of the scan groups have their range in the catalogue.
    std::string WrongNumber(const IniKey& known, std::wstring_view value) const {
        const bool isNumber = value.find_first_not_of(L"0123456789", value.starts_with(L'-') ? 1 : 0) == value.npos;
        if (!isNumber) {
            return "must be a number, not " + Quoted(value);
        }
        const int64_t number = ParseInt64(value);
        const ScanGroup* const group = FindScanSection(m_section->name);
        const SettingInfo* const info = group == nullptr ? nullptr : FindSetting(*group, known.name);
        if (info != nullptr) {
            const std::vector<uint32_t> choices = info->Choices();
            const bool good = choices.empty()
                                  ? number >= info->help->least && number <= info->help->most
                                  : std::ranges::any_of(choices, [number](uint32_t each) { return each == number; });
            return good ? "" : "must be " + info->Range() + ", not " + std::to_string(number);
        }
        return number >= known.least && number <= known.most
                   ? ""
                   : "must be " + std::to_string(known.least) + " to " + std::to_string(known.most) + ", not " +
                         std::to_string(number);
    }

    const IniFile m_kind;
    const std::string m_file;
    std::vector<IniFinding> m_findings;
    unsigned m_line = 0;
    bool m_inSection = false;
    const IniSection* m_section = nullptr;
    std::map<std::wstring, unsigned, LessIgnoringCase> m_sections;
    std::map<std::wstring, unsigned, LessIgnoringCase> m_keys;  // of this section
};

}  // namespace

std::vector<IniFinding> CheckIni(IniFile kind, const std::string& file, std::string_view bytes) {
    return IniChecker(kind, file).Check(bytes);
}

}  // namespace wrb
