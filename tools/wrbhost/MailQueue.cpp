#include "MailQueue.h"

#include <algorithm>
#include <iterator>

#include "DebugLog.h"
#include "SystemText.h"

namespace wrb {
namespace {

constexpr wchar_t kModule[] = L"MailQueue";
constexpr int64_t kRetrySeconds[] = {1 * 60, 5 * 60, 15 * 60, 60 * 60};

}  // namespace

void MailQueue::Work(const std::function<bool()>& stopping) {
    const std::vector<std::wstring> waiting = m_folder.Waiting();
    std::erase_if(m_attempts, [&waiting](const auto& row) { return !std::ranges::binary_search(waiting, row.first); });
    for (const std::wstring& file : waiting) {
        if (stopping()) {
            return;
        }
        Attempts& attempts = m_attempts[file];
        if (m_clock.MonotonicSeconds() >= attempts.nextSecond) {
            Try(file, attempts, stopping);
        }
    }
}

void MailQueue::Try(const std::wstring& file, Attempts& attempts, const std::function<bool()>& stopping) {
    if (!attempts.accepted) {
        const std::optional<std::string> text = m_folder.Read(file);
        if (const auto reason = text ? m_send(*text) : "the file cannot be read, or is too long") {
            if (!stopping()) {  // else the stop may have interrupted it: not an attempt
                NoteFailure(file, attempts, *reason);
            }
            return;
        }
        attempts.accepted = true;
    }
    if (const uint32_t error = m_folder.Delete(file); error != 0) {
        attempts.nextSecond = m_clock.MonotonicSeconds() + kRetrySeconds[0];
        WRB_LOG(kLogWarning, L"%s - the mail %s is sent and cannot be deleted: %s", kModule, file.c_str(),
                WideSystemText(error).c_str());
    }
}

void MailQueue::NoteFailure(const std::wstring& file, Attempts& attempts, const std::string& reason) {
    const int64_t now = m_clock.MonotonicSeconds();
    const std::size_t failed = attempts.failed++;
    attempts.nextSecond = now + kRetrySeconds[std::min(failed, std::size(kRetrySeconds) - 1)];
    if (failed < std::size(kRetrySeconds)) {
        WRB_LOG(kLogInfo, L"%s - the mail %s is tried again in %d minutes: %S", kModule, file.c_str(),
                static_cast<int>(kRetrySeconds[failed] / 60), reason.c_str());
        return;
    }
    const uint32_t error = m_folder.MarkFailed(file);
    const std::wstring kept = error == 0 ? L"" : L", and cannot be renamed: " + WideSystemText(error);
    WRB_LOG(kLogError, L"%s - the mail %s is given up after %d attempts: %S%s", kModule, file.c_str(),
            static_cast<int>(attempts.failed), reason.c_str(), kept.c_str());
}

}  // namespace wrb
