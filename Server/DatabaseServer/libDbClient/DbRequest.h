// Builders shared by the functions of this library: a request from a command and its fields, and the answer in one of
// the shapes of DbCommands.h.
//
// Fields are what CCmdProtocol appends: wide texts (null counts as empty) and 32-bit numbers.
//
// Answers are read without trust: an odd last byte is dropped, a text where a number belongs reads as 0, missing fields
// are empty or 0, spare ones are ignored, and everything but a plain text ends at its first NUL. An empty answer to a
// request for a record or a list means that the server does not know the agent.
//
// AskDb... throw when memory is exhausted. ReadDb... and WriteDb guard their own call.
#pragma once

#include <cstdint>
#include <string>

#include "CallGuard.h"
#include "CmdProtocol.h"
#include "DbCommands.h"
#include "DbTransport.h"

class ISerializable;

namespace wrb {

// Sends the request and fetches its answer: the bytes, or the same as characters.
bool AskDb(const CCmdProtocol& request, int32_t replyId, std::string& answer);
bool AskDb(const CCmdProtocol& request, int32_t replyId, std::wstring& answer);

std::wstring TextOfDbAnswer(const std::string& bytes);

// Turns a record's answer into fields to read. False, with a log line, when it is empty.
bool OpenDbRecord(const std::wstring& answer, const wchar_t* name, CCmdProtocol& fields);

template <typename... Fields>
CCmdProtocol MakeDbRequest(const wchar_t* name, int32_t replyId, const Fields&... parameters) {
    CCmdProtocol request;
    request << name << replyId;
    static_cast<void>((request << ... << parameters));
    return request;
}

template <typename... Fields>
bool AskDbText(const wchar_t* name, std::wstring& answer, const Fields&... parameters) {
    const int32_t replyId = NewDbReplyId();
    std::string bytes;
    if (!AskDb(MakeDbRequest(name, replyId, parameters...), replyId, bytes)) {
        return false;
    }
    answer = TextOfDbAnswer(bytes);
    return true;
}

// `fields` is left standing at the answer's first field.
bool AskDbRecord(const wchar_t* name, CCmdProtocol& fields, const wchar_t* uid, uint32_t number);

bool ReadDbText(const wchar_t* name, std::wstring& answer, const wchar_t* uid, uint32_t number) noexcept;

// `parameters` are the request's fields, TAB between them; an empty text stands for no field.
bool ReadDbPrebuilt(const wchar_t* name, std::wstring& answer, const std::wstring& parameters) noexcept;

// The low 32 bits of the decimal number, which may have a sign.
bool ReadDbNumber(const wchar_t* name, uint32_t& value, const wchar_t* uid, uint32_t number) noexcept;

// A record that is nothing but numbers.
template <typename... Numbers>
bool ReadDbNumbers(const wchar_t* name, const wchar_t* uid, uint32_t number, Numbers&... numbers) noexcept {
    return GuardCall(WRB_HERE, name, [&] {
        CCmdProtocol fields;
        if (!AskDbRecord(name, fields, uid, number)) {
            return false;
        }
        static_cast<void>((fields >> ... >> numbers));
        return true;
    });
}

// Serialized form: the message is named by the command and its body is the uid, cut to the 36 characters that a uid
// field holds; the answer's body is the record.
bool ReadDbMessage(DbCommand command, const wchar_t* uid, const wchar_t* caller, ISerializable& record) noexcept;

template <typename... Fields>
bool WriteDb(const wchar_t* name, const Fields&... parameters) noexcept {
    return GuardCall(WRB_HERE, name, [&] { return Send(MakeDbRequest(name, kDbNoReplyId, parameters...), L"") == 1; });
}

}  // namespace wrb
