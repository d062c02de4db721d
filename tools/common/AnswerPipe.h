// The service's end of an answer: connects to the pipe that a request names, writes, closes.
//
// Unlike the product's pipe client it gives up: a requester that is gone, does not read or never frees its pipe
// must not keep a worker of the service.
#pragma once

#include <windows.h>

#include <cstdint>
#include <span>
#include <string>

namespace wrb {

struct AnswerLimits {
    uint32_t connectMilliseconds = 5'000;  // while the pipe is busy
    uint32_t pieceMilliseconds = 5'000;    // for each piece that is written
    uint32_t totalMilliseconds = 60'000;
};

// Writes the whole answer, which may be empty, in pieces of the pipes' size. Returns 0 or the Windows error:
// ERROR_FILE_NOT_FOUND when the requester is gone, ERROR_TIMEOUT when it takes too long, ERROR_INVALID_NAME for a name
// that leads out of the pipe name space, ERROR_ACCESS_DENIED for that of a service (ServicePipes.h).
DWORD WriteAnswer(const std::wstring& pipeName, std::span<const uint8_t> answer, const AnswerLimits& limits = {});

}  // namespace wrb
