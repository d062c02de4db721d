// The pipes of the command host and of the services, by their bare names, of which a machine has one each.
#pragma once

namespace wrb {

inline constexpr wchar_t kHostPipe[] = L"Calloway Systems WRBY Command Handler Manager";
inline constexpr wchar_t kDbServerPipe[] = L"DbServerNamePipe";
inline constexpr wchar_t kLogPoolPipe[] = L"Global\\LogPoolCommandManager";
inline constexpr wchar_t kLogServicePipe[] = L"Log_ServerNamePipe";
inline constexpr wchar_t kQmAgentPipe[] = L"QMAgentServerNamePipe";
inline constexpr wchar_t kWrbServerPipe[] = L"WrbServerNamePipe";

// True for a name that the system resolves to one of these pipes, however it is spelled: in other letters' case, with
// doubled separators, "." and ".." parts, trailing dots and blanks. The names of reply pipes come from the network, and
// an answer to such a pipe would be a command or a request in the name of this process.
bool NamesServicePipe(const wchar_t* name) noexcept;

// True also for a pipe on which a program awaits an answer of the database server: "DbCln_" and a number, or the id of
// a serialized message. A command's answer to such a pipe would be the database server's.
bool IsClosedToAnswers(const wchar_t* name) noexcept;

}  // namespace wrb
