#include "FileSignature.h"

#include <gtest/gtest.h>

#include "ChildProcess.h"
#include "Handle.h"
#include "TempFolder.h"

namespace {

constexpr wchar_t kUnsigned[] = L"WrbPfwCommon_64x.dll";
constexpr wchar_t kSigned[] = L"signature-test-signed.dll";

LONG Verify(const std::wstring& path) {
    const wrb::FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                           FILE_ATTRIBUTE_NORMAL, nullptr));
    return wrb::VerifyFileSignature(file.Get(), path);
}

class FileSignature : public testing::Test {
  protected:
    void SetUp() override {
        if (!std::filesystem::exists(wrb::test::ProgramFolder() + kSigned)) {
            GTEST_SKIP() << "osslsigncode or openssl is not installed: there is no signed file to judge";
        }
    }
};

TEST_F(FileSignature, MissingAndAlteredOnesAreNoticed) {
    const wrb::test::TempFolder folder;
    std::string bytes = wrb::test::ReadAll(wrb::test::ProgramFolder() + kSigned);
    bytes.at(bytes.size() / 2) ^= 1;
    wrb::test::WriteAll(folder / L"altered.dll", bytes);
    EXPECT_EQ(Verify(wrb::test::ProgramFolder() + kUnsigned), TRUST_E_NOSIGNATURE);
    EXPECT_EQ(Verify((folder / L"altered.dll").wstring()), TRUST_E_BAD_DIGEST);
}

TEST_F(FileSignature, AnUnknownSignerIsRefused) {
    const LONG result = Verify(wrb::test::ProgramFolder() + kSigned);
    if (result == ERROR_SUCCESS) {
        GTEST_SKIP() << "this system trusts any signer: that an unknown one is refused cannot be judged";
    }
    EXPECT_EQ(result, CERT_E_UNTRUSTEDROOT);
}

}  // namespace
