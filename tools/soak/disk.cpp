#include "tools/soak/disk.h"

#include "devkit/boxwelld/files.h"

#include <sys/mount.h>
#include <sys/statvfs.h>

namespace {

constexpr char PLACE[] = "/run";
constexpr char USUAL_SIZE[] = "size=50%";

} // namespace

bool Disk::fill()
{
    struct statvfs status = {};
    statvfs(PLACE, &status);
    const auto used = (status.f_blocks - status.f_bfree) * status.f_bsize;
    full_ =
        mount(nullptr, PLACE, nullptr, MS_REMOUNT, ("size=" + std::to_string(used)).c_str()) == 0;
    return full_;
}

void Disk::free()
{
    if (full_ && mount(nullptr, PLACE, nullptr, MS_REMOUNT, USUAL_SIZE) != 0) {
        throw_errno(PLACE);
    }
    full_ = false;
}
