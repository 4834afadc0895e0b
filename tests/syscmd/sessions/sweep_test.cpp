#include "syscmd/sessions/record.h"
#include "syscmd/sessions/sweep.h"
#include "tests/syscmd/on_device.h"

#include <dirent.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <utime.h>

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <filesystem>
#include <fstream>

namespace {

using Filter = int (*)(const dirent64*);
using Compare = int (*)(const dirent64**, const dirent64**);
Filter filter = nullptr;
bool pins_stay = false; // whatever is pinned is refused, and nothing is unpinned

} // namespace

// In the C library's place.
int ioctl(int file, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    auto* flags = va_arg(arguments, std::uint32_t*);
    va_end(arguments);
    if (!pins_stay)
        return static_cast<int>(syscall(SYS_ioctl, file, request, flags));
    *flags = FS_IMMUTABLE_FL;
    return request == FS_IOC_GETFLAGS ? 0 : (errno = EROFS, -1);
}

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
    EXPECT_EQ(CleanupObsoleteLocalSessions(nullptr), SUCCESS) << "nothing is there";
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

TEST_F(OnDevice, pinsThatAreRefusedTellTheReason)
{
    EXPECT_EQ(UpdateLocalSessionRecords("t", "bob", "00"), SUCCESS);
    expectSaid({});
    const std::string path = LOCAL_SESSION_DIRECTORY "/t", reason = "Read-only file system";
    pins_stay = true;
    EXPECT_EQ(UpdateLocalSessionRecords("t", "bob", "0"), SUCCESS);
    EXPECT_EQ(CleanupObsoleteLocalSessions("bob"), SUCCESS);
    pins_stay = false;
    expectSaid({said("UpdateLocalSessionRecords: set immutable flag", path),
        said("UpdateLocalSessionRecords: ioctl failed", path, reason),
        said("CleanupObsoleteLocalSessions: reset immutable flag", "t"),
        said("CleanupObsoleteLocalSessions: ioctl failed", "t", reason)});
}

} // namespace
