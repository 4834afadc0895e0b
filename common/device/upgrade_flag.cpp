#include "common/device/upgrade_flag.h"

#include "common/result.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

int setSSOUpgradeFlag()
{
    const int flag = open(SSO_UPGRADE_FLAG, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0777);
    const int open_errno = errno;
    close(flag); // of -1 too: refused, and of no consequence
    errno = open_errno;
    return flag == -1 ? -1 : SUCCESS;
}
