// Makes the path \\.\pipe\NAME from the bare name of a service pipe or reply pipe.
#pragma once

#include <cstddef>
#include <cstdint>

namespace wrb {

// Data travels in pieces of at most this many bytes, which is also the size of the pipes' own buffers: one piece is
// one message on the pipe, and one connection carries any number of pieces.
inline constexpr uint32_t kPipePieceBytes = 1024;

// Writes the path into `buffer` of `capacity` characters, cut to fit and always terminated. A null name is an empty
// one. Returns false when the path had to be cut.
bool FormatPipePath(wchar_t* buffer, std::size_t capacity, const wchar_t* name) noexcept;

// False for a name that the system would resolve to something outside the pipe name space: one with a part between
// separators that is nothing but dots and blanks, such as "..\C:\file". Reply-pipe names come from the network, so
// such a name must never reach CreateFile.
bool StaysInPipeNamespace(const wchar_t* name) noexcept;

}  // namespace wrb
