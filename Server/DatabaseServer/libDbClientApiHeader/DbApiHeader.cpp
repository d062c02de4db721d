#include "DbApiHeader.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "DebugLog.h"
#include "MsgSerializer.h"
#include "PipeClient.h"

namespace {

constexpr DWORD kModulePathCharacters = 261;

std::vector<uint8_t> FrameFor(const wchar_t* caller) {
    CDbApiHeaderContent content;
    content.FillInContent(caller);
    CMsgSerializer message;
    message << content;
    const uint32_t words[] = {kDbApiMagic, message.GetSize()};
    std::vector<uint8_t> frame(sizeof words + message.GetSize());
    std::memcpy(frame.data(), words, sizeof words);
    std::copy_n(message.Data(), message.GetSize(), frame.data() + sizeof words);
    return frame;
}

}  // namespace

void CDbApiHeaderContent::FillInContent(const wchar_t* callerName) {
    version = kVersion;
    processId = GetCurrentProcessId();
    threadId = GetCurrentThreadId();
    caller = callerName == nullptr ? L"" : callerName;
    std::array<wchar_t, kModulePathCharacters> path;
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), kModulePathCharacters);
    if (length == 0) {
        const DWORD error = GetLastError();
        WRB_LOG(kLogError, L"%s - fail to get current module name with win32 error [%d]",
                L"CDbApiHeader::FillInContent", error);
    }
    modulePath.assign(path.data(), std::min(length, kModulePathCharacters - 1));  // a cut path counts its terminator
}

void CDbApiHeaderContent::Serialize(ISerializer& serializer) const {
    CSerializer& out = serializer.GetSerializer();
    out << version;
    if (version != 0) {
        out << processId << threadId << modulePath << caller;
    }
}

void CDbApiHeaderContent::Deserialize(ISerializer& serializer) {
    Clear();
    CSerializer& in = serializer.GetSerializer();
    in >> version;
    if (version != 0) {
        in >> processId >> threadId >> modulePath >> caller;
    }
}

void CDbApiHeaderContent::Clear() {
    *this = CDbApiHeaderContent();
}

int SendDbApiHeader(CPipeClient& client, const wchar_t* caller, std::span<const uint8_t> request, bool& requestSent) {
    std::vector<uint8_t> bytes = FrameFor(caller);
    const uint64_t frameBytes = bytes.size();
    bytes.insert(bytes.end(), request.begin(), request.end());
    uint64_t sent = bytes.size();
    requestSent = client.Send(bytes.data(), sent);
    if (sent < frameBytes) {
        WRB_LOG(kLogError, L"%s - fail to send DB API header", L"SendDbApiHeader");
        return 0;
    }
    return 1;
}
