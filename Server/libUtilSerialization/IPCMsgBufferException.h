// What the serializer throws: the buffer ended early, is missing, or is not the object's to give away.
#pragma once

#include <cstdint>

#include "OSException.h"

class CIPCMsgBufferException : public OS::CException {
  public:
    enum Code : uint32_t {
        kOutOfRange = 0,     // more bytes wanted than the message holds, or more written than 32 bits can count
        kInvalidBuffer = 1,  // there is no data block to read, or none could be allocated
        kNotOwner = 2,       // the data block belongs to someone else
    };

    // what() reads "description, (code), [source file|line]". Pass WRB_SOURCE_FILE and __LINE__.
    CIPCMsgBufferException(Code code, const wchar_t* sourceFile, uint32_t line);
};
