/** System calls that proot does not translate. */
#pragma once

/**
 * Makes the newer path-taking system calls answer ENOSYS for this process and all it starts, so
 * that the C library falls back to the older ones. proot 5.1 passes the newer ones on untranslated,
 * and a program under it would see the host's files.
 *
 * @return whether the kernel took the filter
 */
bool refuse_newer_calls();
