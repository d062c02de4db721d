#include "PlainCopy.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

#if defined(__x86_64__) || defined(_M_X64)
#define WRB_HAS_SSE2 1
#include <emmintrin.h>

#include <bit>
#endif

namespace wrb {
namespace {

#if WRB_HAS_SSE2

constexpr unsigned kBlockBytes = 16;

// What one block of the text holds: its characters have been stored, `length` of them before the terminator, if any.
struct Block {
    unsigned length;
    bool ends;
    bool plain;
};

// The text's end is not known yet: a block may reach past it, but never into another page, where nothing may be.
bool StaysInPage(const void* text) noexcept {
    constexpr std::uintptr_t kPage = 4096;
    return (reinterpret_cast<std::uintptr_t>(text) & (kPage - 1)) <= kPage - kBlockBytes;
}

Block CopyBlock(char* to, const char* text) noexcept {
    const __m128i characters = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), characters);
    const auto zeros = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(characters, _mm_setzero_si128())));
    return {zeros != 0 ? static_cast<unsigned>(std::countr_zero(zeros)) : kBlockBytes, zeros != 0, true};
}

Block CopyBlock(char* to, const wchar_t* text) noexcept {
    const __m128i zero = _mm_setzero_si128();
    const __m128i characters = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(characters, zero));
    // Two bits a character.
    const auto zeros = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(characters, zero)));
    const __m128i high = _mm_and_si128(characters, _mm_set1_epi16(static_cast<short>(0xFF80)));
    const auto plain = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(high, zero)));
    const unsigned used = zeros != 0 ? static_cast<unsigned>(std::countr_zero(zeros)) : kBlockBytes;
    return {used / 2, zeros != 0, static_cast<unsigned>(std::countr_one(plain)) >= used};
}

#endif

template <typename Char>
char* Copy(char* to, const char* end, const Char* text) noexcept {
    if (text == nullptr) {
        return to;
    }
#if WRB_HAS_SSE2
    constexpr std::ptrdiff_t kBlock = kBlockBytes / sizeof(Char);
    while (end - to >= kBlock && StaysInPage(text)) {
        const Block block = CopyBlock(to, text);
        if (!block.plain) {
            return nullptr;
        }
        to += block.length;
        if (block.ends) {
            return to;
        }
        text += kBlock;
    }
#endif
    for (; *text != 0; ++text, ++to) {
        if (to == end || (sizeof(Char) > 1 && static_cast<std::make_unsigned_t<Char>>(*text) >= 0x80)) {
            return nullptr;
        }
        *to = static_cast<char>(*text);
    }
    return to;
}

}  // namespace

char* CopyPlain(char* to, const char* end, const char* text) noexcept {
    return Copy(to, end, text);
}

char* CopyPlain(char* to, const char* end, const wchar_t* text) noexcept {
    return Copy(to, end, text);
}

}  // namespace wrb
