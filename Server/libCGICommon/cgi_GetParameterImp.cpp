#include "cgi_GetParameterImp.h"

#include <windows.h>

#include <algorithm>

#include "DebugLog.h"
#include "HtmlText.h"
#include "IgnoringCase.h"

const wchar_t* CGetParameterImp::Find(const wchar_t* name, const wchar_t* defaultText) const noexcept {
    for (std::size_t i = 0; name != nullptr && i < m_texts.size(); i += 2) {
        if (wrb::EqualIgnoringCase(m_texts[i], name)) {
            return m_texts[i + 1].c_str();
        }
    }
    return defaultText;
}

// Compared with what this request has stored: a plain field may hold any path.
const wchar_t* CGetParameterImp::FindUpload(const wchar_t* name) const noexcept {
    const wchar_t* const path = Find(name, L"");
    return std::ranges::find(m_uploads, path) != m_uploads.end() ? path : L"";
}

bool CGetParameterImp::EnumPara(const wchar_t*& name, const wchar_t*& value, bool skipEmpty) noexcept {
    while (skipEmpty && m_cursor < m_texts.size() && m_texts[m_cursor + 1].empty()) {
        m_cursor += 2;
    }
    const bool found = m_cursor < m_texts.size();
    name = found ? m_texts[m_cursor].c_str() : nullptr;
    value = found ? m_texts[m_cursor + 1].c_str() : nullptr;
    m_cursor += found ? 2 : 0;
    return found;
}

int CGetParameterImp::AddParameter(const wchar_t* name, const wchar_t* value) {
    Add(name != nullptr ? name : L"", value != nullptr ? value : L"");
    return 0;
}

void CGetParameterImp::Add(std::wstring name, std::wstring value) {
    m_texts.push_back(std::move(name));
    try {
        m_texts.push_back(std::move(value));
    } catch (...) {  // never a name without a value
        m_texts.pop_back();
        throw;
    }
}

void CGetParameterImp::Reset() noexcept {
    m_texts.clear();
    m_cursor = 0;
}

const char* CGetParameterImp::Dump() {
    std::string table = "<table border=\"1\"><tr><th>Name</th><th>Value</th></tr>\n";
    for (std::size_t i = 0; i < m_texts.size(); i += 2) {
        table +=
            "<tr><td>" + wrb::EscapeHtml(m_texts[i]) + "</td><td>" + wrb::EscapeHtml(m_texts[i + 1]) + "</td></tr>\n";
    }
    m_dump = table + "</table>\n";
    return m_dump.c_str();
}

bool CGetParameterImp::DeleteUnwantedUploadFile(const wchar_t* name) const {
    constexpr const wchar_t* kFunction = L"CGetParameterImp::DeleteUnwantedUploadFile";
    const std::wstring path = m_folder.PathOf(name != nullptr ? name : L"");
    if (path.empty()) {
        WRB_LOG(kLogWarning, L"%s - no upload has this name: [%s]", kFunction, name != nullptr ? name : L"");
        return false;
    }
    WRB_LOG(kLogDebug, L"%s - Delete file full path: %s", kFunction, path.c_str());
    return wrb::DeleteUpload(path, kFunction);
}

void CGetParameterImp::DeleteUploadFiles() noexcept {
    for (const std::wstring& path : m_uploads) {
        if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) {  // moved or deleted one by one
            wrb::DeleteUpload(path, L"CGetParameterImp::DeleteUploadFiles");
        }
    }
    m_uploads.clear();
}
