/** The sweep of local session records, which every new session begins with. */
#pragma once

/**
 * Deletes every record that is more than a day old, with the shared-memory object of its name. The
 * records are judged and dealt with one by one, in the order of their names, by the time at which
 * the sweep began.
 *
 * @param immutableOwner  the user whose pinned records are unpinned first; null unpins nothing
 * @return 0 when the directory was swept or does not exist; -1 when it could not be listed, and
 *         nothing was done
 */
int CleanupObsoleteLocalSessions(const char* immutableOwner);
