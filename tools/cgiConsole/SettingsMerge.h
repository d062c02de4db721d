// The values of a settings form, put over the stored ones and checked.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "Request.h"
#include "ScanChanges.h"
#include "SettingsForm.h"
#include "SettingsSubject.h"

namespace wrb {

// The text that a request gives for a key; null when it gives none, which leaves the setting as it is.
using FieldSource = std::function<const wchar_t*(const std::wstring& key)>;

// A request's values put over the stored ones.
struct MergedForm {
    GroupChange change;
    ControlNotes notes;  // of every key that was given
    bool isWrong = false;
    std::size_t changedMeanwhile = 0;
};

// As if the request gave no key.
MergedForm UnchangedForm(const SettingsSubject& subject, const ScanGroupValues& stored);

// A key that the user has not touched keeps the stored value, also when somebody else has changed it since.
MergedForm MergeForm(const Request& request, const SettingsSubject& subject, const ScanGroupValues& stored,
                     const FieldSource& given);

// The note of a form whose values are not all right: names the keys.
std::wstring WrongText(const MergedForm& merged);

}  // namespace wrb
