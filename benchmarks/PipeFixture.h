// The other ends of the pipes: a client's reply pipe that drops everything, and a database server that answers from
// memory. A figure and its floor use the same ones, so their cost is on both sides of the ratio.
#pragma once

#include <string>

namespace wrb::bench {

inline constexpr wchar_t kSinkPipe[] = L"wrb-bench-reply-pipe-0123456789-0123456789";
inline constexpr wchar_t kDbPipe[] = L"DbServerNamePipe";

// Start on first use and serve until the program ends; the database server may be ended before, so that another one can
// take its pipe.
void NeedSink();
void NeedDatabase();
void EndDatabase();

// The two services that take firewall records, and the last message that reached the service of that name.
inline constexpr wchar_t kAgentPipe[] = L"QMAgentServerNamePipe";
inline constexpr wchar_t kPoolPipe[] = L"Global\\LogPoolCommandManager";
void NeedFirewallServices();
std::string LastMessage(const std::wstring& name);

// A request as the product sends it: header frame and text, with NUL.
std::string DatabaseRequest(const std::wstring& text);

}  // namespace wrb::bench
