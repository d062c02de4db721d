// Events in the Windows event log. EventMessages.mc has their texts and ids, docs/operating.md the list for
// administrators.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "EventMessages.h"

namespace wrb {

// The sources under which a viewer finds the texts, both in the log Application.
inline constexpr wchar_t kHandlerSource[] = L"Warrenby Command Handler";
inline constexpr wchar_t kBackEndSource[] = L"Warrenby Back End";

// `id` is one of EventMessages.h, and `texts` are its %1, %2 and so on. Returns 0 or the Windows error. Any thread.
uint32_t WriteEvent(const wchar_t* source, uint32_t id, std::span<const std::wstring> texts);

// The text that a viewer shows. Only for programs with the messages as a resource; empty in others.
std::wstring EventText(uint32_t id, std::span<const std::wstring> texts);

}  // namespace wrb
