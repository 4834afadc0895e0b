/**
 * Ownership by declaration, for units that handle C strings, descriptors and streams: a local is
 * released when its scope ends, however it ends, and what was decided on is handed over by name.
 *
 *     AUTO_FREE char* text = String("%d", number);
 *     if (text == nullptr) { return -1; }
 *     give(result, text);
 *     return 0;
 *
 * Releasing keeps errno, so that a failure's reason survives the way out.
 */
#pragma once

#include <dirent.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

/** Releases a heap pointer with free() at the end of the scope; the local may be null. */
#define AUTO_FREE __attribute__((cleanup(freeOwned)))
/** Closes a descriptor at the end of the scope; a negative one is none. */
#define AUTO_CLOSE_FD __attribute__((cleanup(closeOwnedFd)))
/** Closes a stream with fclose() at the end of the scope; the local may be null. */
#define AUTO_CLOSE_FILE __attribute__((cleanup(closeOwnedFile)))
/** Closes a stream of popen() with pclose() at the end of the scope; the local may be null. */
#define AUTO_CLOSE_PIPE __attribute__((cleanup(closeOwnedPipe)))
/** Closes a directory stream at the end of the scope; the local may be null. */
#define AUTO_CLOSE_DIR __attribute__((cleanup(closeOwnedDir)))

/** Returns the pointer and leaves null behind: for handing a local to a caller or a structure. */
template<typename T> T* take(T*& local)
{
    T* pointer = local;
    local = nullptr;
    return pointer;
}

/** Returns the descriptor and leaves none behind. */
inline int takeFd(int& local)
{
    const int fd = local;
    local = -1;
    return fd;
}

/** Hands a local to the caller's out-argument. */
template<typename T> void give(T** out, T*& local)
{
    *out = take(local);
}

/** The cleanup of AUTO_FREE: `local` is the address of the pointer, whatever it points to. */
inline void freeOwned(void* local)
{
    const int error = errno;
    void* pointer = nullptr;
    std::memcpy(&pointer, local, sizeof pointer);
    std::free(pointer);
    errno = error;
}

/** The cleanup of AUTO_CLOSE_FD. */
inline void closeOwnedFd(const int* local)
{
    const int error = errno;
    if (*local >= 0) {
        close(*local);
    }
    errno = error;
}

/** The cleanup of AUTO_CLOSE_FILE. */
inline void closeOwnedFile(FILE** local)
{
    const int error = errno;
    if (*local != nullptr) {
        std::fclose(*local);
    }
    errno = error;
}

/** The cleanup of AUTO_CLOSE_PIPE. */
inline void closeOwnedPipe(FILE** local)
{
    const int error = errno;
    if (*local != nullptr) {
        pclose(*local);
    }
    errno = error;
}

/** The cleanup of AUTO_CLOSE_DIR. */
inline void closeOwnedDir(DIR* const* local)
{
    const int error = errno;
    if (*local != nullptr) {
        closedir(*local);
    }
    errno = error;
}
