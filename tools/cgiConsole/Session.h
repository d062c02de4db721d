// The session of a browser and the token that its forms carry.
//
// A session is a random cookie. The token is a keyed hash of the cookie and the user: another site can neither read nor
// make it, and a token of one user or browser is of no use to another. The key is a file that the console makes once:
// Private\console.key in the home folder. Nothing is kept per session.
#pragma once

#include <string>

#include "Request.h"

namespace wrb {

class Session {
  public:
    // Continues the session of the request's cookie, or begins one. Throws a std::exception when the key can be
    // neither read nor made.
    Session(const Request& request, const std::wstring& homeFolder);

    // The header line that gives the browser a new cookie; empty for a session that goes on.
    const std::string& CookieHeader() const { return m_header; }

    std::string Token() const { return m_token; }

    // Whether the request's field "token" is that of its own cookie and user.
    bool Admits(const Request& request) const;

  private:
    bool m_isNew;
    std::string m_header;
    std::string m_token;
};

}  // namespace wrb
