#include "PipeFixture.h"

#include <windows.h>

#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string_view>

#include "BarePipe.h"
#include "BundleRecord.h"
#include "CmdProtocol.h"
#include "DbApiHeader.h"
#include "DbVexor.h"
#include "MsgSerializer.h"
#include "PipeListener.h"
#include "SampleAgent.h"

namespace wrb::bench {
namespace {

// More than the threads of any row, so that no figure waits for a free instance.
constexpr unsigned kInstances = 16;

std::unique_ptr<PipeListener> Listen(const wchar_t* name, PipeListener::Handler handler) {
    PipeListenerOptions options;
    options.name = name;
    options.instances = kInstances;
    auto listener = std::make_unique<PipeListener>(options, std::move(handler));
    if (!listener->Start()) {
        throw std::runtime_error("a pipe of the benchmark is taken: is a service running?");
    }
    return listener;
}

std::mutex g_databaseLock;
std::unique_ptr<PipeListener> g_database;

std::mutex g_lastLock;
std::map<std::wstring, std::string> g_last;

void Keep(const wchar_t* name, const std::string& message) {
    const std::lock_guard guard(g_lastLock);
    g_last[name] = message;
}

std::string_view Bytes(std::wstring_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

std::wstring_view AnswerTo(const std::wstring& command) {
    return command == L"DB_GET_EXTRA"
               ? L".EXE, .COM, .SYS, .DOC, .DRV, .CMD, .XLS, .DLL, .386\t\\temp\t\t\tUniverse-5-4"
           : command == L"DB_GET_VEXOR_BM_CFG" ? L"<Policy/>"
                                               : L"632681409\t20\t3\t4";
}

template <typename... Values>
void AppendBundle(CMsgSerializer& answer, const std::wstring& command, const std::tuple<Values...>&) {
    static_cast<void>(((command == kBundle<Values>.command && (answer << BundleContent<Values>(), true)) || ...));
}

// Records without values, but for the scan settings.
void AnswerMessage(std::span<const uint8_t> request) {
    CMsgSerializer message;
    message.Load(request.data(), static_cast<uint32_t>(request.size()));
    const std::wstring command = message.Name();
    message.Reset();
    if (command == L"DBV2_CLIENT_GET_ALL_SCAN_CFG") {
        message << SampleConfig();
    } else if (command == L"DBV2_CLIENT_GET_ALL_SCAN_EX") {
        message << SampleLists();
    } else if (command == L"DBV2_GET_VEXOR_CUSTOM_BM_CFG") {
        message << CustomBmConfig();
    } else {
        AppendBundle(message, command, Bundles());
    }
    BareSend(message.Id(), {reinterpret_cast<const char*>(message.Data()), message.GetSize()});
}

void Answer(const std::string& message) {
    std::span<const uint8_t> request(reinterpret_cast<const uint8_t*>(message.data()), message.size());
    CDbApiHeaderContent header;
    if (ReadDbApiHeader(request, header) != DbApiHeaderStatus::Ok) {
        return;
    }
    if (!request.empty() && request[0] == 4) {  // the first byte of every message
        return AnswerMessage(request);
    }
    std::wstring text(request.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), request.data(), text.size() * sizeof(wchar_t));
    CCmdProtocol fields(text.c_str());
    std::wstring command;
    std::wstring replyId;
    fields >> command >> replyId;
    if (replyId == L"-1") {
        return;  // a write
    }
    BareSend(L"DbCln_" + replyId, Bytes(AnswerTo(command)));
}

}  // namespace

void NeedSink() {
    static const auto sink = Listen(kSinkPipe, [](const std::string&) {});
}

void NeedDatabase() {
    const std::lock_guard guard(g_databaseLock);
    if (!g_database) {
        g_database = Listen(kDbPipe, Answer);
    }
}

void EndDatabase() {
    const std::lock_guard guard(g_databaseLock);
    g_database.reset();
}

void NeedFirewallServices() {
    static const auto agent = Listen(kAgentPipe, [](const std::string& message) { Keep(kAgentPipe, message); });
    static const auto pool = Listen(kPoolPipe, [](const std::string& message) { Keep(kPoolPipe, message); });
}

std::string LastMessage(const std::wstring& name) {
    const std::lock_guard guard(g_lastLock);
    return g_last[name];
}

std::string DatabaseRequest(const std::wstring& text) {
    CDbApiHeaderContent content;
    content.FillInContent(L"");
    CMsgSerializer header;
    content.Serialize(header);
    const uint32_t size = header.GetSize();
    std::string request(8, '\0');
    std::memcpy(request.data(), &kDbApiMagic, 4);
    std::memcpy(request.data() + 4, &size, 4);
    request.append(reinterpret_cast<const char*>(header.Data()), size);
    return request.append(Bytes(std::wstring_view(text.c_str(), text.size() + 1)));
}

}  // namespace wrb::bench
