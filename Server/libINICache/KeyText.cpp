#include "KeyText.h"

#include <cstring>

#include "PlainCopy.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr std::size_t kWordBytes = sizeof(uint64_t);

// A word at a place, spread over 64 bits. Words are added up, so that no multiplication waits for another.
uint64_t MixWord(const char* from, std::size_t place) noexcept {
    uint64_t word;
    std::memcpy(&word, from, kWordBytes);  // of constant size: one load
    return (word ^ (place * 0x9E3779B97F4A7C15)) * 0x9FB21C651E98DF25;
}

// Eight characters a step; the last step overlaps the one before. The low bits choose the bucket.
uint64_t HashText(const char* text, std::size_t length) noexcept {
    uint64_t sum = length;
    if (length < kWordBytes) {
        char padded[kWordBytes] = {};
        std::memcpy(padded, text, length);
        sum += MixWord(padded, length);
    } else {
        const std::size_t lastWord = length - kWordBytes;
        for (std::size_t i = 0; i < lastWord; i += kWordBytes) {
            sum += MixWord(text + i, i);
        }
        sum += MixWord(text + lastWord, length);
    }
    return sum ^ (sum >> 32);
}

}  // namespace

NarrowText::NarrowText(const wchar_t* text) {
    if (char* end = CopyPlain(m_inline, m_inline + kInline - 1, text)) {
        *end = '\0';
        return;
    }
    m_long = WideToAnsi(text);
    m_text = m_long.c_str();
}

template <typename Char>
void EntryKey::Compose(const Char* section, const Char* key) {
    const char* limit = m_inline + kInline;
    char* end = CopyPlain(m_inline, limit - 1, section);
    if (end != nullptr) {
        *end++ = ':';
        end = CopyPlain(end, limit, key);
    }
    if (end != nullptr) {
        m_length = static_cast<std::size_t>(end - m_inline);
    } else {
        ComposeLong(NarrowText(section).Get(), NarrowText(key).Get());
    }
    m_hash = HashText(m_text, m_length);
}

void EntryKey::ComposeLong(const char* section, const char* key) {
    m_long.append(section).append(1, ':').append(key);
    m_text = m_long.data();
    m_length = m_long.size();
}

template void EntryKey::Compose(const char*, const char*);
template void EntryKey::Compose(const wchar_t*, const wchar_t*);

}  // namespace wrb
