// The data of an installation, at its end.
#pragma once

#include <string>

#include "ServiceSpec.h"

namespace wrb {

// Deletes the folders that the service writes to, the folder Private and wrbscan.ini, all below `home`. Links in them
// are deleted, what they lead to is not. False: something is left.
bool DeleteData(const ServiceSpec& spec, const std::wstring& home);

}  // namespace wrb
