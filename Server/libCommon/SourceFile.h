// WRB_SOURCE_FILE: the current source file as wide text, repo-relative with backslashes
// (Server\libpipe\server\PipeServer.cpp), made at compile time. The compiler's prefix map has already cut the build
// path.
#pragma once

#include <cstddef>

namespace wrb {

template <std::size_t N>
struct SourceFileName {
    wchar_t text[N];

    consteval explicit SourceFileName(const char (&file)[N]) : text{} {
        for (std::size_t i = 0; i < N; ++i) {
            text[i] = file[i] == '/' ? L'\\' : static_cast<wchar_t>(file[i]);
        }
    }
};

}  // namespace wrb

// A file whose log lines name another module redefines this after its includes.
#define WRB_SOURCE_NAME __FILE__

#define WRB_SOURCE_FILE                                                   \
    ([]() noexcept -> const wchar_t* {                                    \
        static constexpr wrb::SourceFileName sourceFile(WRB_SOURCE_NAME); \
        return sourceFile.text;                                           \
    }())
