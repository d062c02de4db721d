// Questions whose right answers are known: a server without load gave them.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "Conversation.h"
#include "StringProtection.h"

namespace wrb::soak {

// Agents of the sample database: nothing of this program changes their settings.
inline constexpr const wchar_t* kSampleAgents[] = {
    L"3f2a6c10-5b1e-4d27-9a64-0c8e7d51b2f3",  // configured
    L"8d94e7b5-20c1-4f8a-8e3d-57a1f09c6b42",  // partly
    L"e5a9308d-6b74-4c12-9f0e-b3d8127a4c61",  // unknown to the database
    L"",                                      // server-wide
};

struct Question {
    std::wstring command;
    std::wstring uid;
    std::wstring parameter;
    bool inParts = false;   // what the back end would add is left out while it is away
    std::wstring answer{};  // readable

    Answer AskAgain(CommandTally& tally) const;
};

class Questions {
  public:
    // The key of the texts that the server protects, as its INI file has it.
    explicit Questions(const std::wstring& protectionKey);

    // Asks everything. Throws std::runtime_error when there is no answer.
    void Learn(CommandTally& tally);

    // An answer in which protected texts, which look different each time, are readable. One thread at a time a key.
    std::wstring Readable(const std::wstring& answer) const;

    std::span<const Question> ScanSettings() const { return m_scan; }
    std::span<const Question> Bundles() const { return m_bundles; }
    std::span<const Question> Facts() const { return m_facts; }
    std::span<const Question> Alerts() const { return m_alerts; }

  private:
    struct Row;
    static const Row kRows[];

    void Learn(CommandTally& tally, const Row& row);

    const ProtectionKey m_key;
    std::vector<Question> m_scan;
    std::vector<Question> m_bundles;
    std::vector<Question> m_facts;
    std::vector<Question> m_alerts;
};

}  // namespace wrb::soak
