#include "cgi_PutStream.h"

#include <windows.h>

#include <algorithm>
#include <charconv>
#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "HtmlText.h"
#include "Text.h"

namespace wrb {

// Fixed memory, so that collecting output cannot fail.
class OutputBuffer {
  public:
    void Put(std::string_view bytes) {
        while (!bytes.empty()) {
            const std::size_t part = std::min(bytes.size(), kCapacity - m_size);
            bytes.copy(m_bytes + m_size, part);
            m_size += part;
            bytes.remove_prefix(part);
            if (m_size == kCapacity) {
                Flush();
            }
        }
    }

    void Flush() {
        std::string_view rest(m_bytes, m_size);
        m_size = 0;
        while (!rest.empty() && !m_broken) {
            DWORD written = 0;
            m_broken = !WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), rest.data(), static_cast<DWORD>(rest.size()),
                                  &written, nullptr) ||
                       written == 0;
            rest.remove_prefix(written);
        }
    }

  private:
    static constexpr std::size_t kCapacity = 16384;

    std::size_t m_size = 0;
    bool m_broken = false;
    char m_bytes[kCapacity];
};

}  // namespace wrb

OutputStreamConverter::OutputStreamConverter(bool writeThrough)
    : m_writeThrough(writeThrough), m_buffer(new (std::nothrow) wrb::OutputBuffer) {}

OutputStreamConverter::~OutputStreamConverter() {
    Flush();
    delete m_buffer;
}

void OutputStreamConverter::EndLine() {
    PutBytes("\n", 1);
    Flush();
}

void OutputStreamConverter::Flush() {
    if (m_buffer != nullptr) {
        m_buffer->Flush();
    }
}

void OutputStreamConverter::PutBytes(const char* bytes, uint32_t count) {
    if (m_buffer == nullptr || bytes == nullptr) {
        return;
    }
    m_buffer->Put({bytes, count});
    if (m_writeThrough) {
        m_buffer->Flush();
    }
}

void OutputStreamConverter::PutWide(const wchar_t* text, bool escape) {
    if (text == nullptr) {
        return;
    }
    try {
        const std::string bytes = escape ? wrb::EscapeHtml(text) : wrb::WideToUtf8(text);
        PutBytes(bytes.data(), static_cast<uint32_t>(bytes.size()));
    } catch (const std::exception&) {  // an exported function throws nothing
    }
}

OutputStreamConverter& endl(OutputStreamConverter& stream) {
    stream.EndLine();
    return stream;
}

OutputStreamConverter& flush(OutputStreamConverter& stream) {
    stream.Flush();
    return stream;
}

CPutStream::CPutStream(bool writeThrough) : OutputStreamConverter(writeThrough) {}

CPutStream::~CPutStream() = default;

CPutStream& CPutStream::operator<<(int number) {
    char digits[16];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    PutBytes(digits, static_cast<uint32_t>(end - digits));
    return *this;
}

CPutStream& CPutStream::operator<<(const char* text) {
    if (text != nullptr) {
        PutBytes(text, static_cast<uint32_t>(std::char_traits<char>::length(text)));
    }
    return *this;
}

CPutStream& CPutStream::operator<<(const wchar_t* text) {
    PutWide(text, false);
    return *this;
}

CPutStream& CPutStream::operator<<(OutputStreamConverter& (*manipulator)(OutputStreamConverter&)) {
    manipulator(*this);
    return *this;
}

void CPutStream::Send(const wchar_t* text, bool escape) {
    PutWide(text, escape);
}

void CPutStream::Send(const unsigned char* bytes, int count) {
    if (count > 0) {
        PutBytes(reinterpret_cast<const char*>(bytes), static_cast<uint32_t>(count));
    }
}
