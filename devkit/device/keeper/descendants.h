/** The processes of a device, seen from the one that keeps them. */
#pragma once

/**
 * Kills every descendant of the calling process and waits until none is left. The caller must be
 * their subreaper (PR_SET_CHILD_SUBREAPER), so that none escapes by losing its parent. Leaves die
 * before their parents: what runs under proot must not outlive it for a moment, since its system
 * calls would then reach the host.
 */
void end_descendants();
