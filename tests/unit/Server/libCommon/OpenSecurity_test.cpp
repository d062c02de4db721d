#include "OpenSecurity.h"

#include <gtest/gtest.h>

namespace {

TEST(OpenSecurity, HasAPresentButNullAccessControlList) {
    for (const bool inheritable : {true, false}) {
        wrb::tagOpenSecurity security;
        ASSERT_EQ(wrb::InitOpenSecurity(security, inheritable), nullptr);
        EXPECT_EQ(security.attributes.nLength, 24u);
        EXPECT_EQ(security.attributes.lpSecurityDescriptor, &security.descriptor);
        EXPECT_EQ(security.attributes.bInheritHandle != FALSE, inheritable);
        BOOL present = FALSE;
        BOOL defaulted = TRUE;
        ACL noList{};
        ACL* list = &noList;
        ASSERT_TRUE(GetSecurityDescriptorDacl(&security.descriptor, &present, &list, &defaulted));
        EXPECT_TRUE(present);
        EXPECT_FALSE(defaulted);
        EXPECT_EQ(list, nullptr);
    }
}

}  // namespace
