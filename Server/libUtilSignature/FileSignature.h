// The digital signature of a file.
#pragma once

#include <windows.h>

#include <string>

namespace wrb {

// Whether the file carries an Authenticode signature that this machine trusts: ERROR_SUCCESS, else the reason as
// WinVerifyTrust gives it (TRUST_E_NOSIGNATURE, TRUST_E_BAD_DIGEST, CERT_E_UNTRUSTEDROOT, ...). `file` is open for
// reading; what is checked is its contents, and `path` only names it. Shows nothing to the user and uses no network:
// revocation is not checked. Any thread.
LONG VerifyFileSignature(HANDLE file, const std::wstring& path);

}  // namespace wrb
