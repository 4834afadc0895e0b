#include "syscmd/sessions/record.h"
#include "syscmd/sessions/sweep.h"
#include "tests/syscmd/on_device.h"

#include <dirent.h>
#include <utime.h>

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
    std::ofstream(path) << "bob";
    const time_t written = 1700000000;
    const utimbuf times = {written, written};
    ASSERT_EQ(utime(path, &times), 0);

    frozen_time = written + 86400;
    CleanupObsoleteLocalSessions(nullptr);
    EXPECT_TRUE(std::filesystem::exists(path));
    expectSaid({});

    frozen_time += 1;
    CleanupObsoleteLocalSessions(nullptr);
    EXPECT_FALSE(std::filesystem::exists(path));
    expectSaid(said("CleanupObsoleteLocalSessions: REMOVE", "t", "1700000000", "1700086401"));
}

} // namespace
