// Facts about the server, and about what an agent may do, for the command table. False: the answer is empty.
#pragma once

#include <string>

class CCmdProtocol;

namespace wrb {

// The name under which agents reach the server: "Master_DomainName" of the scan INI, else the computer's DNS host name.
bool GetServerName(std::wstring& output);

// Six fields: product name, version and build of the server INI's "INI_PRODUCT_SECTION", else of the library's version
// resource; the system as "major.minor.build"; the agent's platform and architecture, 0 when they are not to be had.
bool GetProductInfo(std::wstring& output, const wchar_t* uid);

// "1" when the agent's user may configure the scan type of the field "group bit" (0x1 manual, 0x2 real time,
// 0x4 prescheduled), else "0". Any other bit is "0" without a question to the database.
bool GetCfgPermission(std::wstring& output, const wchar_t* uid, CCmdProtocol& fields);

}  // namespace wrb
