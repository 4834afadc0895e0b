#include "syscmd/sessions/record.h"
#include "syscmd/sessions/sweep.h"
#include "tests/syscmd/on_device.h"

#include <dirent.h>
#include <utime.h>

#include <ctime>
#include <filesystem>
#include <fstream>

namespace {

using Filter = int (*)(const dirent64*);
using Compare = int (*)(const dirent64**, const dirent64**);
Filter filter = nullptr;

} // namespace

extern "C" int __real_scandirat64(int, const char*, dirent64***, Filter, Compare);
extern "C" int __wrap_scandirat64(int, const char*, dirent64***, Filter, Compare);
int __wrap_scandirat64(int directory, const char* path, dirent64*** list, Filter isRecord, Compare compare)
{
    filter = isRecord;
    return __real_scandirat64(directory, path, list, isRecord, compare);
}

namespace {

TEST_F(OnDevice, onlyRegularFilesAreRecords)
{
    std::filesystem::create_directory(LOCAL_SESSION_DIRECTORY);
    EXPECT_EQ(CleanupObsoleteLocalSessions(nullptr), SUCCESS);
    dirent64 entry = {};
    for (int type = DT_UNKNOWN; type <= DT_WHT; ++type) {
        entry.d_type = static_cast<unsigned char>(type);
        EXPECT_EQ(filter(&entry), type == DT_REG ? 1 : 0) << type;
    }
}

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
