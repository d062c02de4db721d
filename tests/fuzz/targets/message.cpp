// Serialized messages: the header, then the body read as each of the records that travel. What was read is written and
// read again, and must come back as the same bytes.
#include "DbAllScanRecord.h"
#include "Fuzz.h"
#include "IPCMsgBufferException.h"
#include "MsgSerializer.h"

namespace {

std::string BytesOf(const CMsgSerializer& message) {
    return {reinterpret_cast<const char*>(message.Data()), message.GetSize()};
}

template <typename Record>
std::string Written(const Record& record) {
    CMsgSerializer message(L"");
    const std::size_t header = message.GetSize();
    message << record;
    return BytesOf(message).substr(header);
}

template <typename Record>
void ReadRecord(const uint8_t* data, uint32_t size) try {
    CMsgSerializer message;
    if (!message.Load(data, size)) {
        return;
    }
    Record record;
    message >> record;
    REQUIRE(message.Remaining() <= size);
    CMsgSerializer copy(L"");
    copy << record;
    CMsgSerializer back;
    REQUIRE(back.Load(copy.Data(), copy.GetSize()));
    Record again;
    back >> again;
    REQUIRE(back.Remaining() == 0);
    REQUIRE(Written(again) == Written(record));
} catch (const CIPCMsgBufferException&) {
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const auto bytes = static_cast<uint32_t>(size);
    ReadRecord<std::wstring>(data, bytes);
    ReadRecord<wrb::AllScanConfig>(data, bytes);
    ReadRecord<wrb::AllScanLists>(data, bytes);
    return 0;
}
