#include "FileSignature.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "ChildProcess.h"
#include "Handle.h"

namespace {

constexpr wchar_t kUnsigned[] = L"WrbPfwCommon_64x.dll";
constexpr wchar_t kSigned[] = L"signature-test-signed.dll";
constexpr wchar_t kAltered[] = L"signature-test-altered.dll";

LONG Verify(const wchar_t* name) {
    const std::wstring path = wrb::test::ProgramFolder() + name;
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
    const std::filesystem::path folder = wrb::test::ProgramFolder();
    std::filesystem::copy_file(folder / kSigned, folder / kAltered, std::filesystem::copy_options::overwrite_existing);
    std::fstream(folder / kAltered, std::ios::in | std::ios::out | std::ios::binary).seekp(8192).put('\x55');
    EXPECT_EQ(Verify(kUnsigned), TRUST_E_NOSIGNATURE);
    EXPECT_EQ(Verify(kAltered), TRUST_E_BAD_DIGEST);
}

TEST_F(FileSignature, AnUnknownSignerIsRefused) {
    const LONG result = Verify(kSigned);
    if (result == ERROR_SUCCESS) {
        GTEST_SKIP() << "this system trusts any signer: that an unknown one is refused cannot be judged";
    }
    EXPECT_EQ(result, CERT_E_UNTRUSTEDROOT);
}

}  // namespace
