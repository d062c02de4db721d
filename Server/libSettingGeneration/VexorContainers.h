// The containers of behaviour monitoring, application control and device control, which render several sections each.
// docs/wire-formats.md describes the policy document that most of their values come from.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "SettingContainer.h"
#include "VexorRecords.h"

// Behaviour monitoring: the policies, the programs that it leaves alone, the switches of its engine. Policies beyond
// the first 10,000 are left out, with a line in the log.
class CSettingContainerBM final : public CSettingContainer {
  public:
    // Reading throws CIPCMsgBufferException when the message ends too early. So do the other two.
    void Deserialize(ISerializer& serializer) override;
    void Serialize(ISerializer& serializer) const override;
    void ExportToIni(std::wstring& out) const;

    std::wstring m_uid;
    std::vector<tagVEXORPolicyItem> m_policies;
    std::vector<wrb::BundleRecord<wrb::ExceptionValues>> m_exceptions;
    std::wstring m_trustedPrograms;  // "|" between them
    wrb::BundleRecord<wrb::EngineValues> m_engine;
};

// Application control. A list without items has no section.
class CSettingContainerDAC final : public CSettingContainer {
  public:
    void Deserialize(ISerializer& serializer) override;
    void Serialize(ISerializer& serializer) const override;
    void ExportToIni(std::wstring& out) const;

    std::wstring m_uid;
    std::vector<wrb::BundleRecord<wrb::ExecutableValues>> m_executables;
    std::vector<tagVEXORDacExceptionItem> m_approved;
};

// Device control: policies in and out of the office, a section each.
class CSettingContainerDlpCfg final : public CSettingContainer {
  public:
    struct Side {
        bool enable = false;
        std::vector<tagVEXORSectionItem> policies;
    };

    void Deserialize(ISerializer& serializer) override;
    void Serialize(ISerializer& serializer) const override;
    void ExportToIni(std::wstring& out) const;

    std::wstring m_uid;
    std::array<Side, 2> m_sides;  // in, out
};
