// The policy document of an agent: behaviour monitoring, application control, device control. The database has it as
// XML; docs/wire-formats.md describes it.
#pragma once

#include <cstdint>
#include <string_view>

#include "VexorContainers.h"

namespace wrb {

struct PolicyDocument {
    uint32_t defaultAction = 0;     // of behaviour policies without an action of their own
    CSettingContainerBM behaviour;  // without policies: the document has none
    CSettingContainerDAC applications;
    CSettingContainerDlpCfg devices;
};

// Elements and attributes that are not known are passed over; those that are missing are empty, 0 or off. Control
// characters in values become blanks: a line end would begin a key of its own. Throws XmlError.
PolicyDocument ReadPolicyDocument(std::wstring_view text);

}  // namespace wrb
