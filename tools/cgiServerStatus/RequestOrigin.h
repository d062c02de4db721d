// Whether a POST comes from this page or from another site's, which a browser sends along with the administrator's
// credentials just the same.
#pragma once

#include <string>

namespace wrb {

// A variable of the gateway environment; empty when it is not set.
std::wstring GatewayVariable(const wchar_t* name);

// False when a browser says that another site is the origin. Programs that are no browsers say nothing and are let in:
// nobody can make them send what their user did not want.
bool ComesFromThisSite();

}  // namespace wrb
