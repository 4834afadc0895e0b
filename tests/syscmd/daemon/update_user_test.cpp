#include "syscmd/daemon/update_user.h"
#include "tests/syscmd/on_device.h"

namespace {

TEST_F(OnDevice, hashesWithoutCloudUserUnlock)
{
    EXPECT_EQ(UpdateUser({"1003", "carol", base64("a:b:c").c_str(), "sky-hold", "c@x"}), SUCCESS);
    const std::string request = exchanges().at(0).request;
    EXPECT_NE(
        request.find("<P2PUserName><![CDATA[(null)]]></P2PUserName>\t\t\t<IsLocked>0</IsLocked> "), std::string::npos);
    EXPECT_NE(request.find("<SysHash><![CDATA[b:c]]>"), std::string::npos);
    expectSaid({said("UpdateUser: group=%s email", "carol", "a", "b:c", "sky-hold", "c@x", "(null)"),
        said("UpdateUser: syscmd:request", sent(0)), said("UpdateUser: syscmd:respond", answer(0))});
    shell("boxwelld show | grep -E 'carol +sky-hold +unlocked'");
}

TEST_F(OnDevice, authorityIsCut)
{
    shell("printf '<owner>abcdefghijklmnopqrstuvwxyz0123456789</owner>' > " OWNER_FILE);
    EXPECT_EQ(UpdateUser({.user_id = "1003", .username = "carol", .email = ""}), SUCCESS);
    EXPECT_EQ(exchanges().at(0).request.rfind("Authorization: abcdefghijklmnopqrstuvwxyz01234\r\n<?xml", 0), 0U);
}

} // namespace
