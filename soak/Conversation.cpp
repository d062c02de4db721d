#include "Conversation.h"

#include <algorithm>
#include <iterator>

#include "CmdProtocol.h"
#include "PipeClient.h"
#include "PipeServer.h"
#include "UniqueName.h"

namespace wrb::soak {
namespace {

constexpr wchar_t kHostPipe[] = L"Calloway Systems WRBY Command Handler Manager";
constexpr uint32_t kAnswerSeconds = 60;

constexpr struct {
    const char* name;
    const wchar_t* wideName;
} kCommands[] = {
#define WRB_COMMAND(name, handler, role, fields, failure, lane) {#name, L"" #name},
#include "CommandTable.inc"
};

}  // namespace

const char* CommandName(uint32_t row) {
    return kCommands[row].name;
}

void Delivered::Count(const std::wstring& command) {
    const auto* const row = std::ranges::find(kCommands, command, [](const auto& entry) { return entry.wideName; });
    if (row != std::end(kCommands)) {
        ++m_counts[static_cast<std::size_t>(row - std::begin(kCommands))];
    }
}

bool Deliver(const wchar_t* pipe, const void* data, std::size_t bytes) {
    CPipeClient client;
    uint64_t count = bytes;
    return client.Initial(pipe) && client.Send(data, count);
}

bool DeliverToHost(const std::wstring& message) {
    return Deliver(kHostPipe, message.data(), message.size() * sizeof(wchar_t));
}

std::wstring NewReplyPipe() {
    return test::UniqueName(L"reply");
}

Answer Ask(Delivered& delivered, const std::wstring& command, std::initializer_list<std::wstring> fields,
           const std::wstring& replyPipe) {
    Answer answer;
    CCmdProtocol message;
    message << command << replyPipe;
    for (const std::wstring& field : fields) {
        message << field;
    }
    CPipeServer server;
    if (!server.Initial(replyPipe.c_str(), kAnswerSeconds)) {
        return answer;
    }
    answer.delivered = DeliverToHost(std::wstring(message.Text()));
    if (answer.delivered) {
        delivered.Count(command);
        answer.answered = server.FetchCmd(answer.text);
    }
    return answer;
}

bool Tell(Delivered& delivered, const std::wstring& command, std::initializer_list<std::wstring> fields) {
    CCmdProtocol message;
    message << command;
    for (const std::wstring& field : fields) {
        message << field;
    }
    if (!DeliverToHost(std::wstring(message.Text()))) {
        return false;
    }
    delivered.Count(command);
    return true;
}

}  // namespace wrb::soak
