#include "FakeDbService.h"

#include <cstring>
#include <sstream>

namespace wrb::test {
namespace {

constexpr std::string_view kMagic("\x03\x07\x1A\x0E", 4);
constexpr std::string_view kMessageStart("\x04\0\0\0\x01\0\0\0\x10\0\0\0\x20\xAC\0\0", 16);
constexpr std::size_t kMessageName = 28;

uint32_t WordAt(std::string_view bytes, std::size_t offset) {
    uint32_t word;
    std::memcpy(&word, bytes.data() + offset, sizeof word);
    return word;
}

std::string WordBytes(std::size_t number) {
    const auto word = static_cast<uint32_t>(number);
    return {reinterpret_cast<const char*>(&word), sizeof word};
}

std::string TextValue(std::wstring_view text) {
    return WordBytes((text.size() + 1) * sizeof(wchar_t)) + WideBytes(text) + std::string(sizeof(wchar_t), '\0');
}

DbRequest TakeApart(const std::string& bytes) {
    DbRequest request;
    if (bytes.size() >= 8 && bytes.starts_with(kMagic) && WordAt(bytes, 4) <= bytes.size() - 8) {
        const std::size_t length = WordAt(bytes, 4);
        request.headerMessage = bytes.substr(8, length);
        request.request = bytes.substr(8 + length);
    }
    return request;
}

}  // namespace

std::string WideBytes(std::wstring_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

std::string MessageBytes(std::wstring_view name, std::string_view body) {
    std::string bytes(kMessageStart);
    bytes += WordBytes(1);
    bytes.append(8, '\0');
    bytes += TextValue(name);
    bytes += TextValue(L"0105" + std::wstring(name) + L"123456_4321_987");
    return bytes.append(body);
}

bool DbRequest::IsMessage() const {
    return std::string_view(request).starts_with(kMessageStart);
}

std::vector<std::wstring> DbRequest::Fields() const {
    std::vector<std::wstring> fields;
    std::wstringstream text(WideText(request).substr(0, request.size() / sizeof(wchar_t) - 1) + L'\t');
    for (std::wstring field; std::getline(text, field, L'\t');) {
        fields.push_back(field);
    }
    return fields;
}

std::vector<std::wstring> DbRequest::Texts() const {
    std::vector<std::wstring> texts;
    for (std::size_t offset = kMessageName; request.size() - offset >= 4;) {
        const uint32_t length = WordAt(request, offset);
        offset += 4;
        if (length < sizeof(wchar_t) || length > request.size() - offset) {
            break;
        }
        texts.push_back(WideText(std::string_view(request).substr(offset, length - sizeof(wchar_t))));
        offset += length;
    }
    return texts;
}

std::wstring DbRequest::Name() const {
    return IsMessage() ? Texts().at(0) : Fields().at(0);
}

std::wstring DbRequest::ReplyPipe() const {
    if (IsMessage()) {
        return Texts().at(1);
    }
    const std::wstring id = Fields().size() > 1 ? Fields()[1] : L"-1";
    return id == L"-1" ? L"" : L"DbCln_" + id;
}

FakeDbService::FakeDbService(Answer answer)
    : m_answer(std::move(answer)), m_pipe(L"DbServerNamePipe", [this](const Received& received) { Serve(received); }) {}

std::vector<DbRequest> FakeDbService::WaitFor(std::size_t count) const {
    std::vector<DbRequest> requests;
    for (const Received& received : m_pipe.WaitFor(count)) {
        requests.push_back(TakeApart(received.bytes));
    }
    return requests;
}

void FakeDbService::Serve(const Received& received) const {
    const DbRequest request = TakeApart(received.bytes);
    if (!m_answer || request.request.size() < sizeof(wchar_t) || request.ReplyPipe().empty()) {
        return;
    }
    if (const std::optional<std::string> answer = m_answer(request)) {
        const FileHandle pipe = OpenPipeForWriting(request.ReplyPipe());
        if (!answer->empty()) {
            WritePiece(pipe, *answer);
        }
    }
}

}  // namespace wrb::test
