#include "CommandHost.h"

#include <algorithm>
#include <cstring>
#include <exception>

#include "Console.h"
#include "DebugLog.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr wchar_t kPipeName[] = L"Calloway Systems WRBY Command Handler Manager";
constexpr std::size_t kShownCharacters = 64;

// The message as characters. An odd last byte becomes the low byte of a last character; the library decides whether
// it is valid.
std::wstring AsText(const std::string& message) {
    std::wstring text((message.size() + 1) / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), message.data(), message.size());
    return text;
}

// The command's name, printable: a peer chose these characters, so control characters are escaped.
std::wstring ShownName(const std::wstring& message) {
    std::wstring name = message.substr(0, kShownCharacters);
    name.resize(std::min(name.size(), name.find(L'\t')));
    std::ranges::replace_if(
        name, [](wchar_t c) { return c < L' ' || (c >= 0x7F && c < 0xA0); }, L'?');
    return name;
}

void Warn(const std::wstring& text) {
    PrintErr("wrbhost: " + WideToUtf8(text) + "\n");
    WRB_LOG(kLogError, L"%s", text.c_str());
}

void WarnOfDrop(PipeDrop reason, std::size_t bytes, uint32_t clientPid) {
    Warn(FormatWide(L"a message of process %u is dropped after %u bytes: %s", clientPid, static_cast<unsigned>(bytes),
                    PipeDropText(reason)));
}

PipeListenerOptions ListenerOptions(unsigned workers) {
    PipeListenerOptions options;
    options.name = kPipeName;
    options.instances = workers;
    options.onDrop = WarnOfDrop;
    return options;
}

}  // namespace

CommandHost::CommandHost(cmdhl_ProcessFn process, unsigned workers)
    : m_process(process), m_listener(ListenerOptions(workers), [this](const std::string& message) { Run(message); }) {}

void CommandHost::Run(const std::string& message) {
    const std::wstring text = AsText(message);
    try {
        const unsigned ran = m_process(text.data(), message.size());
        ++(ran == 1 ? m_handled : m_refused);
    } catch (const std::exception& error) {
        Threw(text, error.what());
    } catch (...) {
        Threw(text, "not a std::exception");
    }
}

void CommandHost::Threw(const std::wstring& message, const char* what) {
    ++m_threw;
    Warn(FormatWide(L"[%s] threw: %S", ShownName(message).c_str(), what));
}

HostCounters CommandHost::Counters() const {
    return {m_handled, m_refused, m_threw, m_listener.Counters().dropped};
}

}  // namespace wrb
