/** A file's inode flags (ioctl_iflags(2)): a word of 32 bits, whatever the requests' types say. */
#pragma once

#include <linux/fs.h>
#include <sys/ioctl.h>

#include <cstdint>

/** Reads the flags of an open file; what ioctl(2) returns, `*flags` untouched on failure. */
inline int getInodeFlags(int file, std::uint32_t* flags)
{
    return ioctl(file, FS_IOC_GETFLAGS, flags);
}

/** Sets the flags of an open file, all of them; what ioctl(2) returns. */
inline int setInodeFlags(int file, std::uint32_t flags)
{
    return ioctl(file, FS_IOC_SETFLAGS, &flags);
}
