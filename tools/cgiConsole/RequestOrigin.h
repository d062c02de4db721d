// Whether a POST comes from this page or from another site. A browser sends both with the administrator's
// credentials.
#pragma once

#include <string>

namespace wrb {

// A variable of the gateway environment; empty when it is not set.
std::wstring GatewayVariable(const wchar_t* name);

// False when a browser names another site as the origin. Other programs name no origin and are admitted: another site
// cannot make them send a request.
bool ComesFromThisSite();

}  // namespace wrb
