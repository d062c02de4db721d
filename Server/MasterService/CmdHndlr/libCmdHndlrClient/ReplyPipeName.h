// Which pipes may take an answer.
#pragma once

namespace wrb {

// True for a name that the system resolves to the pipe of the command host or of a service, however it is spelled: in
// other letters' case, with doubled separators, "." and ".." parts, trailing dots and blanks. The names come from the
// network, and an answer to such a pipe would be a command or a request in the name of this process.
bool NamesServicePipe(const wchar_t* name) noexcept;

}  // namespace wrb
