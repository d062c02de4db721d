#include "IPCMsgBufferException.h"

#include <cstdio>
#include <string>

#include "Text.h"

namespace {

constexpr const char* kDescriptions[] = {"Out of range", "Invalid buffer", "Not owner"};

std::string Describe(CIPCMsgBufferException::Code code, const wchar_t* sourceFile, uint32_t line) {
    char text[512];
    std::snprintf(text, sizeof text, "%s, (%d), [%s|%d]", kDescriptions[code], static_cast<int>(code),
                  wrb::WideToAnsi(sourceFile).c_str(), static_cast<int>(line));
    return text;
}

}  // namespace

CIPCMsgBufferException::CIPCMsgBufferException(Code code, const wchar_t* sourceFile, uint32_t line)
    : OS::CException(code, Describe(code, sourceFile, line)) {}
