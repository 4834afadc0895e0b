#include "common/device/upgrade_flag.h"

#include "common/result.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

int setSSOUpgradeFlag()
{
    const int flag = creat(SSO_UPGRADE_FLAG, 0777);
    const int creat_errno = errno;
    close(flag); // of -1 too: refused, and of no consequence
    errno = creat_errno;
    return flag == -1 ? -1 : SUCCESS;
}
