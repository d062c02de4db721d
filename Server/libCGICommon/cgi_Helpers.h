// What the gateway programs of the web console share besides the two classes (cgi_GetParameter.h, cgi_PutStream.h).
//
// Exports     are marked in the headers, because their names are C++ names and so differ between compilers: build the
//             gateway program with the family of compiler that built the library. No type of the C++ library crosses
//             the boundary, so that the two may use different run-time libraries. Nothing throws.
// Text        is UTF-16 when wide and UTF-8 when narrow. A null text counts as an empty one.
// Threads     A gateway program serves one request and ends; nothing of these headers is for several threads.
// Debug log   goes where cmdhl_ReloadDebugSetting (cmdhl.h) has sent it; before that call lines go nowhere.
#pragma once

#include <stdint.h>

#if defined(WRB_CGI_BUILD)
#define WRB_CGI_API __declspec(dllexport)
#elif defined(WRB_CGI_STATIC)  // tests, which take the code in themselves
#define WRB_CGI_API
#else
#define WRB_CGI_API __declspec(dllimport)
#endif

// Room for the longest home folder and its terminator.
constexpr uint32_t kHomeDirCapacity = 260;

// The server's home folder with a backslash at its end, into a buffer of `capacity` characters. False, with an empty
// text in the buffer, when there is no home folder or it does not fit with its terminator.
WRB_CGI_API bool cgi_GetHomeDir(wchar_t* buffer, uint32_t capacity);

// Percent-decodes `text` into a buffer of `capacity` characters, cut there and always terminated; returns the
// characters written. %XX is a byte of UTF-8 text, broken bytes become U+FFFD; %uXXXX is a UTF-16 unit. An escape that
// is incomplete, has other digits or means NUL is kept as it is: a NUL would hide the rest of the text.
WRB_CGI_API uint32_t cgi_UnEscapeUrl(const char* text, wchar_t* buffer, uint32_t capacity);
