// What a request for settings is about: one group of scan settings of the server, of one agent or of all agents.
#pragma once

#include <optional>
#include <string>

#include "Request.h"
#include "ScanGroup.h"
#include "SettingsForm.h"
#include "View.h"

namespace wrb {

struct SettingsSubject {
    SettingsLevel level;
    const ScanGroup* group;
    std::wstring uid;  // of SettingsLevel::Agent
};

// Nothing for a level or a group that does not exist.
std::optional<SettingsSubject> FindSettingsSubject(const Request& request);

// The query of the page with another group of the same subject.
std::wstring AddressOf(const SettingsSubject& subject, const ScanGroup& group);

// What the audit names as changed.
std::wstring AuditTarget(const SettingsSubject& subject);

// The page's menus and headings.
void AddSettingsFrame(Data& data, const SettingsSubject& subject);

}  // namespace wrb
