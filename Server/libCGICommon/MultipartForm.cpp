#include "MultipartForm.h"

#include <algorithm>

#include "AsciiCase.h"

namespace wrb {
namespace {

constexpr std::string_view kBlanks = " \t";

std::string_view Trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(kBlanks);
    return begin == text.npos ? std::string_view() : text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

// `text` begins after the opening quote. A backslash escapes the quote alone: some clients send whole Windows paths.
std::string TakeQuoted(std::string_view& text) {
    std::string value;
    while (!text.empty() && text.front() != '"') {
        text.remove_prefix(text.starts_with("\\\"") ? 1 : 0);
        value += text.front();
        text.remove_prefix(1);
    }
    return value;
}

// The first parameter of that name in a header's value, such as boundary in: multipart/form-data; boundary=x
std::optional<std::string> HeaderParameter(std::string_view header, std::string_view wanted) {
    for (std::size_t next = header.find(';'); next != header.npos; next = header.find(';')) {
        header.remove_prefix(next + 1);
        const std::size_t nameEnd = header.find_first_of("=;");
        if (nameEnd == header.npos || header[nameEnd] == ';') {
            continue;
        }
        const std::string_view name = Trimmed(header.substr(0, nameEnd));
        header.remove_prefix(nameEnd + 1);
        header.remove_prefix(std::min(header.find_first_not_of(kBlanks), header.size()));
        std::string value;
        if (header.starts_with('"')) {
            header.remove_prefix(1);
            value = TakeQuoted(header);
        } else {
            value = Trimmed(header.substr(0, header.find(';')));
        }
        if (EqualIgnoringCase(name, wanted)) {
            return value;
        }
    }
    return std::nullopt;
}

// Name and file name from the headers of a part; false when they do not make it a field of a form.
bool ReadPartHeaders(std::string_view headers, MultipartPart& part) {
    constexpr std::string_view kDisposition = "content-disposition:";
    while (!headers.empty()) {
        const std::string_view line = headers.substr(0, headers.find("\r\n"));
        headers.remove_prefix(std::min(line.size() + 2, headers.size()));
        if (StartsIgnoringCase(line, kDisposition)) {
            const std::string_view value = line.substr(kDisposition.size());
            part.name = HeaderParameter(value, "name").value_or("");
            part.fileName = HeaderParameter(value, "filename");
            return EqualIgnoringCase(Trimmed(value.substr(0, value.find(';'))), "form-data") && !part.name.empty() &&
                   line.find('\0') == line.npos;
        }
    }
    return false;
}

class MultipartParser {
  public:
    MultipartParser(std::string_view body, std::string_view boundary)
        : m_body(body), m_delimiter("\r\n--" + std::string(boundary)) {}

    CgiStatus Run(std::vector<MultipartPart>& parts) {
        // The line break of the first delimiter may be missing, at the very start.
        const bool atStart = m_body.starts_with(std::string_view(m_delimiter).substr(2));
        if (!(atStart && EndDelimiter(m_delimiter.size() - 2)) && !FindDelimiter(0)) {
            return kCgiMultipartNoEnd;
        }
        while (!m_last) {
            if (parts.size() == kMostMultipartParts) {
                return kCgiMultipartTooManyParts;
            }
            if (const CgiStatus status = TakePart(parts.emplace_back()); status != kCgiFetched) {
                parts.pop_back();
                return status;
            }
        }
        return kCgiFetched;
    }

  private:
    CgiStatus TakePart(MultipartPart& part) {
        // From the line break of the delimiter on: a part without headers has its empty line right there, and one of no
        // byte shares the line break of the empty line with the next delimiter.
        const std::size_t begin = m_next - 2;
        const std::size_t emptyLine = m_body.substr(begin, kLongestPartHeaders + 2).find("\r\n\r\n");
        if (!FindDelimiter(begin)) {
            return kCgiMultipartNoEnd;
        }
        if (emptyLine == m_body.npos || m_contentEnd < begin + emptyLine) {
            return kCgiMultipartBadPart;
        }
        const std::string_view headers = m_body.substr(begin, emptyLine);
        const std::size_t content = begin + emptyLine + 4;
        part.content = m_body.substr(content, std::max(m_contentEnd, content) - content);
        const bool good = ReadPartHeaders(headers, part);
        return good && (part.fileName || part.content.find('\0') == part.content.npos) ? kCgiFetched
                                                                                       : kCgiMultipartBadPart;
    }

    // Finds the next delimiter from `from` on: m_contentEnd is where it begins, m_next what follows its line.
    bool FindDelimiter(std::size_t from) {
        for (std::size_t found = m_body.find(m_delimiter, from); found != m_body.npos;
             found = m_body.find(m_delimiter, found + 2)) {
            if (EndDelimiter(found + m_delimiter.size())) {
                m_contentEnd = found;
                return true;
            }
        }
        return false;
    }

    // Whether the text at `position`, after a boundary, makes it a delimiter: two dashes, or the end of the line.
    bool EndDelimiter(std::size_t position) {
        const std::string_view rest = m_body.substr(position);
        m_last = rest.starts_with("--");
        const std::size_t blanks = std::min(rest.find_first_not_of(kBlanks), rest.size());
        m_next = position + blanks + 2;
        return m_last || rest.substr(blanks).starts_with("\r\n");
    }

    const std::string_view m_body;
    const std::string m_delimiter;
    std::size_t m_contentEnd = 0;
    std::size_t m_next = 0;
    bool m_last = false;
};

}  // namespace

std::string MultipartBoundary(std::string_view contentType) {
    std::string boundary = HeaderParameter(contentType, "boundary").value_or("");
    return boundary.size() <= kLongestBoundary ? boundary : std::string();
}

CgiStatus ParseMultipart(std::string_view body, std::string_view boundary, std::vector<MultipartPart>& parts) {
    return MultipartParser(body, boundary).Run(parts);
}

std::wstring LastComponent(std::wstring_view fileName) {
    const std::size_t separator = fileName.find_last_of(L"/\\:");
    std::wstring name(separator == fileName.npos ? fileName : fileName.substr(separator + 1));
    std::erase_if(name, [](wchar_t character) { return character < L' ' || character == 0x7F; });
    name.resize(name.find_last_not_of(L". ") + 1);  // nothing found: nothing left
    return name;
}

}  // namespace wrb
