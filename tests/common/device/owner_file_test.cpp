#include "tests/syscmd/on_device.h"

#include <filesystem>

namespace {

TEST_F(OnDevice, ownerFileWithoutRemoteOwner)
{
    EXPECT_EQ(createOwnerFile(true, "a&<b", nullptr, OWNER_FILE), SUCCESS);
    EXPECT_EQ(shell("cat " OWNER_FILE),
        "<?xml version=\"1.0\" encoding=\"utf-8\"?><registration><owner>a&<b</owner><model>BX-4200</model>"
        "<firmware_id>2.31.204</firmware_id><firmware_time>1731936000</firmware_time><serial>BW24A1100317</serial>"
        "<link_agent_id>LA-7C41-D09A</link_agent_id></registration>");
    EXPECT_EQ(createOwnerFile(true, "", "", OWNER_FILE), SUCCESS);
    shell("grep -q '<owner></owner>.*<p2powner></p2powner></registration>$' " OWNER_FILE);
    EXPECT_EQ(createOwnerFile(true, "a", "", "/nowhere/file"), -1);
    EXPECT_EQ(createOwnerFile(true, std::string(10000, 'x'), "", "/dev/full"), -4);
    EXPECT_EQ(createOwnerFile(true, "a", "", "/dev/full"), SUCCESS) << "found out when it is closed";
}

TEST_F(OnDevice, deviceInformation)
{
    const std::pair<const char*, const char*> answers[] = {{"BX \\r\\r\\n", "BX "}, {"B\\rX\\r\\n2", "B\rX"},
        {"Error: 1", "Error: 1"}, {"x ERROR: y", nullptr}, {"an error: z", nullptr}, {"\\r\\n", nullptr},
        {"", nullptr}};
    for (const auto& [answer, expected] : answers) {
        shell(std::string("printf '") + answer + "' > /var/lib/device/info/Serial; echo old > " OWNER_FILE);
        std::string value = "untouched";
        EXPECT_EQ(readBoxwellInfoValue(std::string("Serial"), value), expected != nullptr) << answer;
        EXPECT_EQ(value, expected == nullptr ? "untouched" : expected);
        EXPECT_EQ(createOwnerFile(true, "a", "", OWNER_FILE), expected == nullptr ? -3 : 0) << answer;
        EXPECT_EQ(std::filesystem::exists(OWNER_FILE), expected != nullptr) << answer;
    }
}

TEST_F(OnDevice, informationIsAskedForInOrder)
{
    shell("cd /var/lib/device && mkdir -p bin && printf '#!/bin/sh\\necho \"$1\" | tee -a /var/lib/device/asked' > "
          "bin/boxwellinfo && chmod +x bin/boxwellinfo");
    const std::string path = getenv("PATH");
    setenv("PATH", ("/var/lib/device/bin:" + path).c_str(), 1);
    EXPECT_EQ(createOwnerFile(true, "a", nullptr, OWNER_FILE), SUCCESS);
    setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(shell("cat /var/lib/device/asked"), "Model\nFirmware_Version\nFirmware_Time\nSerial\n");
}

TEST_F(OnDevice, agentId)
{
    const std::pair<const char*, const char*> lines[] = {{"agent_id = LA-7  # link_agent_id", "LA-7"},
        {"link_agent_id= x\\n", "id="}, {"link_agent   link_agent_id", nullptr},
        {"link_agent_\\nlink_agent_id \\n", "id"}, {"none", nullptr}};
    for (const auto& [line, expected] : lines) {
        shell(std::string("printf '") + line + "' > /opt/linkhub/etc/linkagent.conf");
        std::string xid = "untouched";
        EXPECT_EQ(readXid(xid), expected != nullptr) << line;
        EXPECT_EQ(xid, expected == nullptr ? "untouched" : expected);
        EXPECT_EQ(createOwnerFile(true, "a", nullptr, OWNER_FILE), SUCCESS);
        shell("grep -q '<link_agent_id>' " OWNER_FILE, expected == nullptr ? 1 : 0);
    }
}

} // namespace
