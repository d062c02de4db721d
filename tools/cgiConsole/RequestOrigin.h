// Whether a request comes from this site or from another one. A browser sends both with the administrator's
// credentials.
#pragma once

#include <string>

namespace wrb {

// A variable of the gateway environment; empty when it is not set.
std::wstring GatewayVariable(const wchar_t* name);

// Whether a browser fetches the page for one of another site, as an image or a frame, and not because somebody opens
// it.
bool IsPartOfAnotherSite();

// False when a browser names another site as the origin. Other programs name no origin and are admitted: another site
// cannot make them send a request.
bool ComesFromThisSite();

}  // namespace wrb
