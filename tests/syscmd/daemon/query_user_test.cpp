#include "syscmd/daemon/query_user.h"
#include "tests/syscmd/on_device.h"

#include <filesystem>
#include <fstream>

namespace {

TEST_F(OnDevice, thousandsOfRecords)
{
    std::ofstream reply("/var/lib/device/reply");
    reply << R"(<xs:response status="success">)";
    for (int i = 0; i < 20000; ++i)
        reply << "<User id=\"" << i << "\"><User_Id>" << i << "</User_Id><Group_Name><![CDATA[g" << i
              << "]]></Group_Name><User_Name><![CDATA[u" << i << "]]></User_Name><Email_Address><![CDATA[e" << i
              << "]]></Email_Address></User>";
    reply.close();
    shell("rm /var/log/shbroker.log; boxwelld order reply @/var/lib/device/reply --count 2");
    MAX_LOG_LEVEL = 0; // each record that does not match is a statement
    for (const auto& [name, expected] : {std::pair{"u10000", "10000 g10000 e10000"}, {"zoe", " g19999 e19999"}}) {
        Owned id;
        Owned group;
        Owned email;
        ASSERT_EQ(GetUserData(&id.text, &group.text, &email.text, name), SUCCESS);
        EXPECT_EQ(id.read() + ' ' + group.read() + ' ' + email.read(), expected);
    }
    EXPECT_FALSE(std::filesystem::exists("/var/log/shbroker.log"));
}

} // namespace
