#include "RecordingFile.h"

#include <cstring>
#include <stdexcept>

#include "AccessList.h"
#include "SystemText.h"

namespace wrb {
namespace {

template <typename Record>
std::span<const uint8_t> RawBytes(const Record& record) {
    return {reinterpret_cast<const uint8_t*>(&record), sizeof record};
}

[[noreturn]] void ThrowSystem(const char* what) {
    const DWORD error = GetLastError();
    throw std::runtime_error(std::string(what) + SystemText(error));
}

uint64_t CountIn(std::span<const uint8_t> record) {
    uint64_t count = 0;
    if (record.size() == sizeof(RecordHead) + sizeof count) {
        std::memcpy(&count, record.data() + sizeof(RecordHead), sizeof count);
    }
    return count;
}

}  // namespace

bool RecordingWriter::Create(const std::wstring& path, bool replaces, const RecordingHead& head) {
    AccessList access;
    if (!access.Set({}, L"")) {
        return false;
    }
    m_file.Reset(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, access.Attributes(),
                             replaces ? CREATE_ALWAYS : CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    return m_file && WriteRecord(RawBytes(head));
}

bool RecordingWriter::WriteRecord(std::span<const uint8_t> record) {
    DWORD written = 0;
    return WriteFile(m_file.Get(), record.data(), static_cast<DWORD>(record.size()), &written, nullptr) &&
           written == record.size();
}

bool RecordingWriter::WriteCount(RecordKind kind, uint64_t count) {
    const struct {
        RecordHead head;
        uint64_t count;
    } record = {{sizeof record, kind}, count};
    return WriteRecord(RawBytes(record));
}

FileView::FileView(const std::wstring& path)
    : m_file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr)) {
    LARGE_INTEGER size{};
    if (!m_file || !GetFileSizeEx(m_file.Get(), &size)) {
        ThrowSystem("cannot open the file: ");
    }
    m_bytes = static_cast<std::size_t>(size.QuadPart);
    if (m_bytes == 0) {
        return;  // an empty file cannot be mapped
    }
    m_section.Reset(CreateFileMappingW(m_file.Get(), nullptr, PAGE_READONLY, 0, 0, nullptr));
    m_view.Reset(m_section ? MapViewOfFile(m_section.Get(), FILE_MAP_READ, 0, 0, 0) : nullptr);
    if (!m_view) {
        ThrowSystem("cannot read the file: ");
    }
}

std::span<const uint8_t> FileView::Bytes() const {
    return {static_cast<const uint8_t*>(m_view.Get()), m_bytes};
}

std::span<const uint8_t> FirstRecord(std::span<const uint8_t> bytes) noexcept {
    RecordHead head{};
    if (bytes.size() < sizeof head) {
        return {};
    }
    std::memcpy(&head, bytes.data(), sizeof head);
    return head.bytes < sizeof head || head.bytes > bytes.size() ? std::span<const uint8_t>() : bytes.first(head.bytes);
}

Recording ReadRecording(std::span<const uint8_t> bytes) {
    Recording recording;
    if (bytes.size() < sizeof recording.head) {
        throw std::runtime_error("not a recording");
    }
    std::memcpy(&recording.head, bytes.data(), sizeof recording.head);
    if (recording.head.signature != kRecordingSignature || recording.head.headBytes < sizeof recording.head ||
        recording.head.headBytes > bytes.size()) {
        throw std::runtime_error("not a recording");
    }
    if (recording.head.version != kRecordingVersion) {
        throw std::runtime_error("a recording of version " + std::to_string(recording.head.version) +
                                 "; this program reads version " + std::to_string(kRecordingVersion));
    }
    bytes = bytes.subspan(recording.head.headBytes);
    for (auto record = FirstRecord(bytes); !record.empty() && !recording.isWhole; record = FirstRecord(bytes)) {
        bytes = bytes.subspan(record.size());
        RecordHead head;
        std::memcpy(&head, record.data(), sizeof head);
        if (const auto command = ViewCommandRecord(record)) {
            recording.commands.push_back(*command);
        }
        recording.missed += head.kind == RecordKind::Missed ? CountIn(record) : 0;
        recording.isWhole = head.kind == RecordKind::End;
    }
    return recording;
}

}  // namespace wrb
