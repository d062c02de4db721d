// CPipeServer: a private reply pipe, which a requester opens before it sends its request; and the combined
// PipeSendAndRecvW.
//
// A message is all that one client writes between connecting and closing its end; there is no length on the pipe. The
// server is constructed, made ready by one Initial, asked for one message by FetchCmd, and destroyed. It may also be
// asked again: between two fetches a new client finds the pipe busy and waits for the next one. It is used from one
// thread, and objects on different threads share nothing: the caller makes its pipe names unique.
//
// A user-defined object (an event, or a waitable timer) ends every wait of the server once it is signalled.
//
// Nothing throws. A failed step returns false and is logged with its Windows error: at level 'E' when it fails the
// call; at 'W' when it does not, and for a wait that the user-defined object has ended; the client's process id at 'D'.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "AnswerMemory.h"
#include "Handle.h"
#include "PipeClient.h"
#include "ReceiveBuffer.h"
#include "ReplyPipe.h"
#include "ServerProcess.h"

class CPipeServer {
  public:
    // A message longer than this is refused: a peer must not be able to use up the service's memory. A command message
    // cannot store a longer text, and large serialized messages travel in files.
    static constexpr uint64_t kLargestMessageBytes = 16u << 20;

    CPipeServer();
    ~CPipeServer();  // cancels what is pending and waits for it before anything is freed or handed on
    CPipeServer(const CPipeServer&) = delete;
    CPipeServer& operator=(const CPipeServer&) = delete;

    // The two short forms make one instance that every local account may connect to.

    // A fetch gives up when the message has not come whole in `timeoutSeconds`; 0 waits for ever.
    bool Initial(const wchar_t* name, uint32_t timeoutSeconds);

    // Gives up when `userEvent`, which stays the caller's, is signalled. A null event waits for ever.
    bool Initial(const wchar_t* name, HANDLE userEvent);

    // Makes min(instanceCount, 255) instances under a path that is cut at 255 characters. `userObject` stays the
    // caller's. The system waits for 64 objects at most, so a server of more than 63 instances can be connected to but
    // not fetched from. A name that another process holds is tried for half a second.
    bool Initial(uint32_t instanceCount, const wchar_t* name, SECURITY_ATTRIBUTES* securityAttributes,
                 HANDLE userObject);

    // To be called after Initial, with the open connection of the request: every wait also ends when the process that
    // serves it ends, because nobody else answers. A client that the system knows to be another process is turned away
    // with one log line. Without effect where the system does not tell that process.
    void EndWith(const CPipeClient& client) noexcept;

    // How many bytes the messages that other servers of this process read may take together; AnswerMemory::kTogether
    // without this call. Beyond that a message is refused with one log line at level 'W'. It counts from its arrival to
    // the next fetch or the end of its server.
    void LimitOthers(uint64_t bytes) noexcept { m_memory.SetLimit(bytes); }

    // Reads one whole message, which may be empty. The wide form takes the bytes as UTF-16 and drops an odd last one.
    // False when the user-defined object was signalled, the process of EndWith has ended or the message is refused;
    // `out` is then of no use. `clientPid` receives the writer's process id, or 0 where it cannot be told.
    bool FetchCmd(std::string& out, DWORD* clientPid = nullptr);
    bool FetchCmd(std::wstring& out, DWORD* clientPid = nullptr);

    // Drops the instance's client and waits for the next one. False also for an instance that does not exist.
    bool DisconnectAndReconnect(uint32_t instance, DWORD* clientPid = nullptr);

  private:
    using ReadResult = wrb::ReplyPipe::ReadResult;
    using GetClientPid = BOOL WINAPI(HANDLE pipe, ULONG* pid);

    static constexpr uint32_t kMostInstances = 255;
    static constexpr std::size_t kPathCharacters = 256;
    // The size of a read until a peer writes more than that at once. The system touches every page of the buffer that a
    // read offers, so offering all 512000 bytes would cost more than the rest of an exchange.
    static constexpr DWORD kReadBytes = 4096;

    bool InitialOpen(const wchar_t* name, HANDLE userObject);
    void OwnUserObject(wrb::KernelHandle object);
    bool InitialInstance(wrb::ReplyPipe& instance, uint32_t count, SECURITY_ATTRIBUTES* securityAttributes);
    wrb::FileHandle CreatePipeInstance(uint32_t count, SECURITY_ATTRIBUTES* securityAttributes) const;

    template <typename String>
    bool Fetch(String& out, DWORD* clientPid, const wchar_t* appendFailure);
    template <typename String>
    bool AppendBuffer(String& out, DWORD bytes, const wchar_t* appendFailure);
    ReadResult ReadPipe(uint8_t* buffer, DWORD& length, DWORD* clientPid);
    ReadResult AwaitInstance(uint32_t& instance);
    ReadResult AwaitClient(uint32_t& instance);
    bool IsStranger(HANDLE pipe) const;
    void ReconnectSpentInstances();
    DWORD Wait();
    bool HasOwnTimer() const;
    void ArmTimer();
    bool WasUserObjectSignalled() const;
    DWORD QueryClientPid(HANDLE pipe) const;

    wrb::ModuleHandle m_kernel32;
    GetClientPid* m_getClientPid = nullptr;  // null where the system lacks it
    wrb::ReceiveBuffer m_buffer;
    wrb::AnswerMemory m_memory;  // of the present message
    wchar_t m_path[kPathCharacters] = {};
    uint32_t m_timeoutSeconds = 0;
    ULONGLONG m_waitStart = 0;            // for the present message, on the 64-bit tick clock; 0: no wait yet
    bool m_isTimed = false;               // the timer runs for it
    wrb::KernelHandle m_ownedUserObject;  // when the server made the object itself
    HANDLE m_userObject = nullptr;
    uint32_t m_instanceCount = 0;
    DWORD m_peerId = 0;                       // of EndWith
    wrb::ProcessHandle m_peer;                // the same
    std::unique_ptr<HANDLE[]> m_waitHandles;  // the user-defined object, then the instances' events, then the peer
    std::unique_ptr<wrb::ReplyPipe[]> m_instances;
};

// Opens the reply pipe on `server`, then sends the request: the pipe stands before the service can answer. The caller
// fetches the answer from `server` and destroys it. `userEvent` as in Initial. Returns 1, or 0 with the cause logged.
int PipeSendAndRecvW(const void* request, uint64_t requestBytes, const wchar_t* replyPipeName,
                     const wchar_t* targetPipeName, CPipeServer& server, HANDLE userEvent);
