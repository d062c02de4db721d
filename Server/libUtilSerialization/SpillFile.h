// SpillFile: the sender's side of a message in file mode, a temporary file for what no longer fits in memory.
//
// The file is deleted with the object unless it has been handed over; that keeps the last error. Nothing throws but for
// lack of memory, and then no file is left behind. One thread at a time.
#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

namespace wrb {

// Who may use a file that is handed over: IIS_IUSRS, IUSR, SYSTEM and Everyone, in this order. Each entry allows (A)
// all rights (GA) and is inherited by files and folders (OICI).
inline constexpr wchar_t kReceiverAccess[] =
    L"D:(A;OICI;GA;;;S-1-5-32-568)(A;OICI;GA;;;S-1-5-17)(A;OICI;GA;;;S-1-5-18)(A;OICI;GA;;;S-1-1-0)";

class SpillFile {
  public:
    // Null when no directory takes a new file; GetLastError has the cause.
    static std::unique_ptr<SpillFile> Create();

    SpillFile(const SpillFile&) = delete;
    SpillFile& operator=(const SpillFile&) = delete;
    ~SpillFile();

    const std::wstring& Path() const noexcept { return m_path; }

    // A write that fails shows at Close.
    void Write(const void* bytes, uint32_t count);

    // Ends the writing; true when every byte has reached the file.
    bool Close();

    // Gives the file kReceiverAccess: the receiver may run under any of these accounts, and it deletes the file. False
    // with the cause in GetLastError.
    bool OpenToReceivers() const;

    // From here on the receiver deletes the file.
    void HandOver() noexcept { m_deleteFile = false; }

  private:
    SpillFile() = default;

    std::wstring m_path;
    std::ofstream m_stream;
    bool m_deleteFile = true;
};

}  // namespace wrb
