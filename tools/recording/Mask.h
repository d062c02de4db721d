// Recordings without personal data: uids and texts are replaced, numbers, names of commands, sections and keys stay.
//
// The same uid always gets the same mask, in the form of a uid, and the same text the same mask, "~" and 12 hexadecimal
// digits. The masks come from a random key, which is kept nowhere: nobody can mask a guess and compare.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "KeyedHash.h"
#include "RecordingFormat.h"

namespace wrb {

// One thread. Throws OS::CException when the system refuses a key or a hash.
class Mask {
  public:
    Mask();

    // The whole command record, masked.
    std::string Record(const RecordView& record);

    std::wstring Message(std::wstring_view message);

    // `isIni`: of lines KEY=VALUE and [SECTION]; else of fields.
    std::wstring Answer(std::wstring_view answer, bool isIni);

  private:
    std::wstring Field(std::wstring_view field);
    std::wstring Line(std::wstring_view line);

    HashKey m_key;
    std::unordered_map<std::wstring, std::wstring> m_masks;  // made before
};

// Whether the field is the mask of a text.
bool IsTextMask(std::wstring_view field);

}  // namespace wrb
