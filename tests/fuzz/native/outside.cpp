// What stands for the modules that talk to the system: a log that formats its lines and drops them, no temporary
// files, no pipes, no INI files, no ODBC, and uploads that are taken and forgotten.
#include "DebugLog.h"
#include "FakeProfile.h"
#include "PipeClient.h"
#include "ProfileAccess.h"
#include "ResultFile.h"
#include "SpillDirectory.h"
#include "SpillFile.h"
#include "SqlConnection.h"
#include "SystemText.h"
#include "Text.h"
#include "UploadFolder.h"

constinit std::atomic<wrb::LogFilter*> wrb::LogFilter::s_shared{nullptr};

wrb::LogFilter::LogFilter() noexcept = default;

wrb::LogFilter& wrb::LogFilter::MakeShared() noexcept {
    static LogFilter* const filter = new LogFilter;
    s_shared.store(filter);
    return *filter;
}

void DebugLog(uint32_t, const wchar_t*, uint32_t, const wchar_t* format, ...) noexcept {
    wchar_t text[4096];
    va_list arguments;
    va_start(arguments, format);
    wrb::FormatIntoV(text, std::size(text), format, arguments);
    va_end(arguments);
}

bool CPipeClient::Send(const void*, uint64_t& byteCount) {
    byteCount = 0;
    return false;
}

std::unique_ptr<wrb::SpillFile> wrb::SpillFile::Create() {
    return nullptr;
}
wrb::SpillFile::~SpillFile() = default;
void wrb::SpillFile::Write(const void*, uint32_t) {}
bool wrb::SpillFile::Close() {
    return false;
}
bool wrb::SpillFile::OpenToReceivers() const {
    return false;
}

void wrb::DeleteSpillFile(const std::wstring&) noexcept {}

wrb::ResultFile::~ResultFile() = default;
bool wrb::ResultFile::Open(const std::wstring&) {
    return false;
}
wrb::Block wrb::ResultFile::Read() {
    return nullptr;
}
uint8_t* wrb::ResultFile::Map() {
    return nullptr;
}

std::unique_ptr<wrb::SqlConnection> wrb::ConnectOdbc(const SqlAddress&) {
    return nullptr;
}

wrb::IProfileAccess& wrb::SystemProfile() {
    static FakeProfile profile;
    return profile;
}

std::string wrb::SystemText(uint32_t) {
    return {};
}

wrb::UploadFolder::UploadFolder(const std::wstring& homeFolder) : m_folder(homeFolder) {}
std::wstring wrb::UploadFolder::Store(std::string_view, const wchar_t*) const {
    return L"upload";
}
std::wstring wrb::UploadFolder::PathOf(std::wstring_view) const {
    return {};
}
bool wrb::DeleteUpload(const std::wstring&, const wchar_t*) {
    return true;
}
