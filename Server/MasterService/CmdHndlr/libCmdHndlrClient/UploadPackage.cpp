#include "UploadPackage.h"

#include <windows.h>

#include "DebugLog.h"
#include "Text.h"

namespace wrb {
namespace {

bool LeaveOut(const char*, const char*, unsigned, void*) {
    return false;
}

void LogRefusal(const wchar_t* handler, const UploadFile& file, const std::wstring& path) {
    if (file.refusal != nullptr) {
        WRB_LOG(kLogWarning, L"%s - refused, %s: %s", handler, file.refusal, path.c_str());
    }
}

}  // namespace

std::wstring ExtractionDirectory(std::wstring_view base, std::wstring_view replyPipe, std::size_t skip) {
    return std::wstring(base).append(replyPipe.substr(skip));
}

UploadPackage::UploadPackage(const wchar_t* handler, const std::wstring& package, const std::wstring& folder)
    : m_package(OpenUploadedPackage(package)) {
    LogRefusal(handler, m_package, package);
    if (!IsRefused()) {
        m_folder = MakeUploadFolder(folder);
        LogRefusal(handler, m_folder, folder);
    }
}

bool UploadPackage::Test() const {
    return Unpack(LeaveOut, nullptr);
}

bool UploadPackage::Unpack(PackageCallback callback, void* context) const {
    return m_package.handle && m_folder.handle &&
           ExtractPackage(m_package.handle.Get(), m_folder.path, callback, context);
}

void RemoveEntryFolders(const char* directory, const char* entry) {
    std::wstring folder = AnsiToWide(directory);
    const std::size_t top = folder.size();
    folder.append(L"\\").append(AnsiToWide(entry));
    for (std::size_t end = folder.rfind(L'\\'); end > top; end = folder.rfind(L'\\')) {
        folder.resize(end);
        if (!RemoveDirectoryW(folder.c_str())) {
            return;
        }
    }
}

}  // namespace wrb
