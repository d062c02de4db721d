#include "DbRequest.h"

#include <cstring>

#include "AgentUid.h"
#include "DebugLog.h"
#include "MsgSerializer.h"
#include "PipeServer.h"
#include "Text.h"

namespace {

template <typename String>
bool Ask(const CCmdProtocol& request, int32_t replyId, String& answer) {
    CPipeServer server;
    if (wrb::SendAndRecv(request, replyId, server, kDbAnswerSeconds, L"") != 1) {
        return false;
    }
    if (!server.FetchCmd(answer)) {
        WRB_LOG(kLogError, L"PipeServer.FetchCmd Failed!");
        return false;
    }
    return true;
}

}  // namespace

bool wrb::AskDb(const CCmdProtocol& request, int32_t replyId, std::string& answer) {
    return Ask(request, replyId, answer);
}

bool wrb::AskDb(const CCmdProtocol& request, int32_t replyId, std::wstring& answer) {
    return Ask(request, replyId, answer);
}

std::wstring wrb::TextOfDbAnswer(const std::string& bytes) {
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    return text;
}

bool wrb::OpenDbRecord(const std::wstring& answer, const wchar_t* name, CCmdProtocol& fields) {
    fields = CCmdProtocol(answer.c_str());
    if (answer.empty()) {
        WRB_LOG(kLogDebug, L"%s - empty answer", name);
    }
    return !answer.empty();
}

bool wrb::ReadDbText(const wchar_t* name, std::wstring& answer, const wchar_t* uid, uint32_t number) noexcept {
    return GuardCall(WRB_HERE, name, [&] { return AskDbText(name, answer, uid, number); });
}

bool wrb::ReadDbPrebuilt(const wchar_t* name, std::wstring& answer, const std::wstring& parameters) noexcept {
    return GuardCall(WRB_HERE, name, [&] {
        return parameters.empty() ? AskDbText(name, answer) : AskDbText(name, answer, parameters);
    });
}

bool wrb::ReadDbNumber(const wchar_t* name, uint32_t& value, const wchar_t* uid, uint32_t number) noexcept {
    return GuardCall(WRB_HERE, name, [&] {
        std::wstring answer;
        if (!AskDbText(name, answer, uid, number)) {
            return false;
        }
        value = static_cast<uint32_t>(ParseInt64(answer));
        return true;
    });
}

bool wrb::AskDbRecord(const wchar_t* name, CCmdProtocol& fields, const wchar_t* uid, uint32_t number) {
    std::wstring answer;
    return AskDbText(name, answer, uid, number) && OpenDbRecord(answer, name, fields);
}

bool wrb::ReadDbMessage(DbCommand command, const wchar_t* uid, const wchar_t* caller, ISerializable& record) noexcept {
    return GuardCall(WRB_HERE, caller, [&] {
        CMsgSerializer message(DbName(command));
        message << CutUid(uid);
        if (SendAndRecv(message, caller, kDbAnswerSeconds) != 1) {
            return false;
        }
        message >> record;
        return true;
    });
}
