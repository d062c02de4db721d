// Whether a service serves its pipe.
#pragma once

namespace wrb {

// `pipe` is the bare name. Looks without connecting: a service would take a connection for a message. A pipe whose
// instances are all busy is served, too. Returns at once. Any thread.
bool IsServed(const wchar_t* pipe) noexcept;

}  // namespace wrb
