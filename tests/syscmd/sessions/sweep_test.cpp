#include "syscmd/sessions/record.h"
#include "syscmd/sessions/sweep.h"
#include "tests/syscmd/on_device.h"

#include <utime.h>

#include <ctime>
#include <filesystem>
#include <fstream>

namespace {

TEST_F(OnDevice, aRecordOfExactlyADayIsKept)
{
    const char* path = LOCAL_SESSION_DIRECTORY "/t";
    std::filesystem::create_directory(LOCAL_SESSION_DIRECTORY);
    for (const int age : {86400, 86401}) {
        time_t now = 0;
        do { // until the sweep fell into the second that the record's age was counted from
            shell(": > /var/log/shbroker.log");
            journalStatements();
            std::ofstream(path) << "bob";
            now = time(nullptr);
            const utimbuf times = {now - age, now - age};
            ASSERT_EQ(utime(path, &times), 0);
            CleanupObsoleteLocalSessions(nullptr);
        } while (time(nullptr) != now);
        EXPECT_EQ(std::filesystem::exists(path), age == 86400);
        if (age == 86400)
            expectSaid({});
        else
            expectSaid(
                said("CleanupObsoleteLocalSessions: REMOVE", "t", std::to_string(now - age), std::to_string(now)));
    }
}

} // namespace
