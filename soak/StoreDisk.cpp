#include "StoreDisk.h"

#include <windows.h>

#include "Handle.h"

namespace wrb::soak {
namespace {

constexpr uint64_t kLargestVolume = 4ull << 30;
constexpr std::size_t kLargestPiece = 1u << 20;
constexpr std::size_t kSmallestPiece = 1u << 12;

}  // namespace

bool StoreDisk::CanBeFilled() const {
    ULARGE_INTEGER size{};
    return GetDiskFreeSpaceExW(m_folder.c_str(), nullptr, &size, nullptr) && size.QuadPart <= kLargestVolume;
}

// Pieces become smaller until not even a page goes in.
void StoreDisk::Fill() const {
    const FileHandle file(CreateFileW(m_ballast.c_str(), FILE_APPEND_DATA, 0, nullptr, OPEN_ALWAYS, 0, nullptr));
    const std::string bytes(kLargestPiece, 'x');
    for (std::size_t piece = kLargestPiece; file && piece >= kSmallestPiece;) {
        DWORD written = 0;
        if (!WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(piece), &written, nullptr) || written < piece) {
            piece /= 2;
        }
    }
}

void StoreDisk::Release() const {
    DeleteFileW(m_ballast.c_str());
}

}  // namespace wrb::soak
