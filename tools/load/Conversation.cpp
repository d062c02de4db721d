#include "Conversation.h"

#include <windows.h>
// objbase.h needs windows.h before it.
#include <objbase.h>

#include "CmdProtocol.h"
#include "CommandCatalog.h"
#include "PipeClient.h"
#include "PipeServer.h"
#include "ServicePipes.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr uint32_t kAnswerSeconds = 60;

std::wstring Message(CCmdProtocol& message, std::span<const std::wstring> fields) {
    for (const std::wstring& field : fields) {
        message << field;
    }
    return std::wstring(message.Text());
}

bool Send(CPipeClient& client, const std::wstring& message) {
    uint64_t bytes = message.size() * sizeof(wchar_t);
    return client.Send(message.data(), bytes);
}

}  // namespace

void CommandTally::Count(Counts& counts, const std::wstring& command) {
    if (const CommandEntry* const entry = FindCommand(command); entry != nullptr) {
        ++counts[static_cast<std::size_t>(entry - CommandCatalog().data())];
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
    GUID guid{};
    wchar_t text[40] = L"{}";
    if (FAILED(CoCreateGuid(&guid)) || StringFromGUID2(guid, text, 40) == 0) {
        return FormatWide(L"agent-reply-%08u-%08u-0000-00000000000000", GetCurrentProcessId(), GetTickCount());
    }
    return L"agent-reply" + std::wstring(text + 1, 36);
}

Answer Exchange(const std::wstring& message, const std::wstring& replyPipe) {
    Answer answer;
    CPipeServer server;
    if (!server.Initial(replyPipe.c_str(), kAnswerSeconds)) {
        return answer;
    }
    CPipeClient client;
    if (client.Initial(kHostPipe)) {
        server.EndWith(client);
        answer.delivered = Send(client, message);
        client.Close();
    }
    answer.answered = answer.delivered && server.FetchCmd(answer.text);
    return answer;
}

Answer Ask(CommandTally& tally, const std::wstring& command, std::span<const std::wstring> fields,
           const std::wstring& replyPipe) {
    CCmdProtocol head;
    head << command << replyPipe;
    Answer answer = Exchange(Message(head, fields), replyPipe);
    if (answer.delivered) {
        tally.CountDelivered(command);
    }
    if (answer.answered) {
        tally.CountAnswered(command);
    }
    return answer;
}

bool Tell(CommandTally& tally, const std::wstring& command, std::span<const std::wstring> fields) {
    CCmdProtocol head;
    head << command;
    if (!DeliverToHost(Message(head, fields))) {
        return false;
    }
    tally.CountDelivered(command);
    return true;
}

}  // namespace wrb
