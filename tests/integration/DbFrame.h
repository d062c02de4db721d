// A request to the database server as it lies on the pipe.
#pragma once

#include <string>

#include "BackEnd.h"
#include "DbApiHeader.h"
#include "MsgSerializer.h"

namespace wrb::test {

// The frame of a request, and the request after it.
inline std::string Framed(const std::string& request) {
    CDbApiHeaderContent content;
    content.FillInContent(L"back_test");
    CMsgSerializer message;
    message << content;
    const uint32_t words[] = {kDbApiMagic, message.GetSize()};
    return std::string(reinterpret_cast<const char*>(words), sizeof words) + BytesOf(message) + request;
}

}  // namespace wrb::test
