/** What a child process that runs somebody's library can do to the machine: nothing. */
#pragma once

/**
 * Takes from this process, and from what it executes, the means to change files, to open sockets
 * and to signal others; limits its processor time. Only what is async-signal-safe is called.
 *
 * @return false when the system refuses; errno tells why
 */
bool confine_this_process();
