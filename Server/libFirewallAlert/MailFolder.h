// The folder of mails that wait for their delivery: Temp\Mail in the home folder, one file a mail.
//
// The command library stores mails, wrbhost delivers them. A name begins with the time at which it was made, so that
// the oldest sorts first. ".eml" waits, ".failed" is kept for the administrator. Only plain files with such names
// count, and none in a folder that is a link (HeldFolder.h): others can write to the folders.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wrb {

class CancelAfter;

// Any thread; one process stores at a time. The functions that return a number return 0 or the Windows error. A
// function that another process holds up by an oplock gives up after two seconds, with ERROR_OPERATION_ABORTED (995);
// so does a Store for which the folder has too many files to be read in that time.
class MailFolder {
  public:
    static constexpr std::size_t kMostFiles = 1000;
    static constexpr std::size_t kMostBytes = 256 * 1024;

    // An empty home folder: nothing can be stored.
    explicit MailFolder(const std::wstring& homeFolder);

    // A name for a mail of that calendar second, unique on this computer, without its extension.
    static std::wstring NewName(int64_t seconds);

    // The file is written to Temp\NewMail and then renamed, so that a mail that shows is whole. Of more than kMostFiles
    // the oldest failed ones are deleted, at most 100 of them; when so many wait, the error is ERROR_NOT_ENOUGH_QUOTA.
    uint32_t Store(const std::wstring& name, std::string_view text) const;

    // The waiting mails as file names, oldest first, kMostFiles at most.
    std::vector<std::wstring> Waiting() const;

    // Nothing: the file cannot be read, or is longer than kMostBytes.
    std::optional<std::string> Read(const std::wstring& file) const;
    uint32_t Delete(const std::wstring& file) const;
    uint32_t MarkFailed(const std::wstring& file) const;

    // Deletes what an interrupted Store has left, at most 100 files: for the start of the process that stores.
    void DeleteUnfinished() const;

  private:
    uint32_t MakeRoom(const CancelAfter& limit) const;

    const std::wstring m_home;
    const std::wstring m_new;
    const std::wstring m_mail;
};

}  // namespace wrb
