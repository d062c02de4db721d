/* libCmdHndlrClient.dll: the command handlers of the master service, for C and C++.
 *
 * Conventions
 *
 *   Text      UTF-16 (wchar_t of 16 bits). A command is one text of fields with a single TAB between them: the name of
 *             the command, then what that command takes. A command that answers takes the bare name of the caller's
 *             reply pipe as its field 1 and writes the answer there, once, as UTF-16 without a terminator. The caller
 *             makes that pipe before it sends the command, of the message type: the library sets its end to message
 *             read mode, and a pipe of the byte type refuses that.
 *   Units     Sizes are in bytes: two for each character.
 *   Ownership The library keeps no pointer that it is given, but for `reserved`, which it never reads. It returns none.
 *   Threads   The library starts none. cmdhl_Initialize and cmdhl_Finalize are called once each and alone; between them
 *             cmdhl_Process may run on any number of threads at once, and cmdhl_ReloadDebugSetting beside it. A command
 *             runs on the caller's thread and may block it: on the database server, or on a reader that lets its
 *             reply pipe fill up.
 *   Results   FALSE IS NOT FAILURE. The three functions that return bool tell whether an external debug-log library was
 *             loaded, and the log is internal: they return false when all is well. Success and failure of a command
 *             show in its answer and in the debug log.
 *   Errors    What goes wrong inside a command is logged and gives an empty answer or none. One thing may leave the
 *             library: a C++ exception derived from std::exception, out of cmdhl_Initialize when the counter library is
 *             gone, and out of cmdhl_Process when a handler cannot go on: memory is exhausted, a command that is
 *             counted runs after cmdhl_Finalize, or the reply pipe's name of an upload is shorter than the part that
 *             agents put in front (std::out_of_range). The library has released everything by then and can be called
 *             again; a service that must survive such a command catches around cmdhl_Process.
 */
#ifndef WRB_CMDHL_H
#define WRB_CMDHL_H

#include <stdbool.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Sets up the debug log, the command map, the caches of the server's INI files, the call counters and the cache of the
 * behaviour-monitor policies. The counters are shared: they start from zero unless another process that runs the
 * library is counting. A process that cannot attach to them logs one line at level 'W' and counts nothing. The two
 * paths are for an external debug-log library; empty texts do. `reserved` is NULL. Missing INI files are not an error:
 * every setting has a default. A second call keeps the policies. */
bool cmdhl_Initialize(const wchar_t* debugIni, const wchar_t* debugLibrary, void* reserved);

/* Runs one command. `message` holds `bytes` bytes and needs no terminator. Only the low 32 bits of `bytes` are the
 * size: when they are all ones, the text is zero-terminated instead and is measured. An odd last byte is dropped.
 *
 * Returns 1 when a handler ran, whatever came of it. Returns 0, without a trace in the log, when `message` is NULL, is
 * shorter than 15 bytes, has a size of 2 GiB or more, does not begin with "CMDHL_", or names a command that is unknown
 * or not built. */
unsigned cmdhl_Process(const wchar_t* message, unsigned long long bytes);

/* Releases the policies and the call counters; every cmdhl_Process must have returned. Settings, log and command map
 * stay as they are until the library is unloaded. Always false. */
bool cmdhl_Finalize(void);

/* Sets up the debug log again, as cmdhl_Initialize does, and touches nothing else. */
bool cmdhl_ReloadDebugSetting(const wchar_t* debugIni, const wchar_t* debugLibrary);

/* The same four for a program that binds the library at run time. */
typedef bool (*cmdhl_InitializeFn)(const wchar_t* debugIni, const wchar_t* debugLibrary, void* reserved);
typedef unsigned (*cmdhl_ProcessFn)(const wchar_t* message, unsigned long long bytes);
typedef bool (*cmdhl_FinalizeFn)(void);
typedef bool (*cmdhl_ReloadDebugSettingFn)(const wchar_t* debugIni, const wchar_t* debugLibrary);

#ifdef __cplusplus
}
#endif

#endif
