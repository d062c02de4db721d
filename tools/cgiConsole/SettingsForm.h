// The form of one group of scan settings: labelled controls under headings, made from the catalogue.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "ScanGroup.h"
#include "SettingCatalog.h"
#include "View.h"

namespace wrb {

enum class SettingsLevel : uint8_t { Server, Agent, All };

// What the form says about one key.
struct ControlNote {
    std::wstring typed;  // stands in the control
    std::string error;   // why it was not taken; empty: it was
    std::string notice;  // that somebody else has changed it meanwhile
};

using ControlNotes = std::map<std::wstring_view, ControlNote>;

// The headings with their controls. A control shows what `notes` has for its key, else the stored value; beside it goes
// the stored value ("was.KEY"), by which the next POST sees what has changed since.
Data FormSections(const ScanGroup& group, SettingsLevel level, const ScanGroupValues& stored,
                  const ControlNotes& notes);

}  // namespace wrb
