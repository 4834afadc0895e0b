/** What keeps a snapshot of a device and the programs that change the device apart. */
#pragma once

#include "devkit/on_device.h"

#include <fcntl.h>
#include <sys/file.h>

/**
 * Lives while its process changes the device. Changes share the lock; a snapshot waits until there
 * are none, and those to come wait for it. Elsewhere than on a device there is no lock, and nothing
 * to wait for.
 */
class Change {
  public:
    Change() : fd_(open(DEVICE_MARKER, O_RDONLY | O_CLOEXEC))
    {
        if (fd_ >= 0) {
            flock(fd_, LOCK_SH);
        }
    }
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;
    ~Change()
    {
        if (fd_ >= 0) {
            close(fd_);
        }
    }

  private:
    int fd_;
};
