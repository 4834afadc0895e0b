#include "syscmd/daemon/add_user.h"
#include "tests/syscmd/on_device.h"

namespace {

TEST_F(OnDevice, accountWithoutPasswordGetsThePlaceholderPair)
{
    EXPECT_EQ(AddUser("zoe", nullptr, "z@x", "User"), SUCCESS);
    const std::string sent = exchanges().at(0).request;
    EXPECT_NE(sent.find("<User id=\"0\" resource-type=\"User\">"), std::string::npos);
    EXPECT_NE(sent.find("<SmbHash><![CDATA[7C41D09AQ3B8E2F65A0D9C14E7B3F820]]>"), std::string::npos);
    EXPECT_NE(sent.find("<SysHash><![CDATA[$1$Qa7Lm2Xp$Zr4.hT9wYc1KbN3sVe8Fo0]]>"), std::string::npos);
}

} // namespace
