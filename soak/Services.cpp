#include "Services.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <utility>

#include "Text.h"

namespace wrb::soak {
namespace {

constexpr std::chrono::minutes kPatience{3};
constexpr UINT kKilledExitCode = 9;

[[noreturn]] void Fail(const std::wstring& program, const char* what, const std::string& output) {
    throw std::runtime_error(WideToUtf8(program) + " " + what + ":\n" + output);
}

std::string LastLine(const std::string& output) {
    const std::string text = output.substr(0, output.find_last_not_of("\r\n") + 1);
    return text.substr(text.rfind('\n') + 1);
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

uint64_t NumberAt(const std::string& line, const std::string& label) {
    const std::size_t at = line.find(label);
    if (at == std::string::npos) {
        throw std::runtime_error("no \"" + label + "\" in: " + line);
    }
    std::size_t start = at + label.size();
    if (label.front() == ' ') {
        start = at;
        while (start > 0 && IsDigit(line[start - 1])) {
            --start;
        }
    }
    return std::stoull(line.substr(start));
}

}  // namespace

void Service::Start() {
    const auto process = std::make_shared<test::ChildProcess>(m_program, m_arguments);
    if (!process->WaitForOutput(m_ready)) {
        Fail(m_program, "does not start", process->Output());
    }
    SetRunning(process);
}

void Service::Stop() {
    RunProgram(m_program, m_stopArguments);
    if (m_process->WaitForExit(kPatience) != 0u) {
        Fail(m_program, "does not end well", m_process->Output());
    }
    m_lastLines.push_back(LastLine(m_process->Output()));
    SetRunning(nullptr);
    ++m_stops;
}

void Service::Kill() {
    if (m_process->WaitForExit(std::chrono::milliseconds(0))) {
        Fail(m_program, "has ended by itself", m_process->Output());
    }
    TerminateProcess(m_process->Handle(), kKilledExitCode);
    m_process->WaitForExit(kPatience);
    SetRunning(nullptr);
    ++m_kills;
}

std::optional<test::ResourceUse> Service::Use() const {
    const auto process = Running();
    return process == nullptr ? std::nullopt : std::optional(test::CurrentResourceUse(process->Handle()));
}

std::shared_ptr<test::ChildProcess> Service::Running() const {
    const std::lock_guard lock(m_lock);
    return m_process;
}

void Service::SetRunning(std::shared_ptr<test::ChildProcess> process) {
    const std::lock_guard lock(m_lock);
    m_process = std::move(process);
}

uint64_t Service::Total(const std::string& label) const {
    uint64_t total = 0;
    for (const std::string& line : m_lastLines) {
        total += NumberAt(line, label);
    }
    return total;
}

void RunProgram(const std::wstring& program, const std::vector<std::wstring>& arguments) {
    const test::ChildProcess process(program, arguments);
    if (process.WaitForExit(kPatience) != 0u) {
        Fail(program, "failed", process.Output());
    }
}

}  // namespace wrb::soak
