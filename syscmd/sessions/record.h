/**
 * Local session records: one small file a session, named after its token, that holds the user's
 * name. docs/session-records.md tells the format.
 */
#pragma once

/** The directory of the records. */
#define LOCAL_SESSION_DIRECTORY "/opt/skyhold/etc/local_sessions"

/**
 * Deletes every record that is more than a day old, with the shared-memory object of its name.
 *
 * @param immutableOwner  the user whose pinned records are unpinned first; null unpins nothing
 * @return 0 when the directory was swept or does not exist, -1 when it could not be listed
 */
int CleanupObsoleteLocalSessions(const char* immutableOwner);

/**
 * Writes one record, in place of an earlier one of that token.
 *
 * @param token     the record's file name; unchecked, a path of 256 bytes or more gets no record
 * @param username  the record's content
 * @param expires   "0" pins the record by the immutable attribute
 * @return 0 when the record was opened and written, pinned or not; -1 when there is none (logged,
 * but for a record that cannot be opened) or an argument is null (logged)
 */
int UpdateLocalSessionRecords(const char* token, const char* username, const char* expires);
