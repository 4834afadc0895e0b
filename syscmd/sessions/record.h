/**
 * Local session records: one small file a session, named after its token, that holds the user's
 * name. docs/session-records.md tells the format.
 */
#pragma once

/** The directory of the records. */
#define LOCAL_SESSION_DIRECTORY "/opt/skyhold/etc/local_sessions"

/** The expiry that pins a record; any other makes it an ordinary one, of a day. */
constexpr const char* PINNED = "0";

/**
 * Writes one record, in place of an earlier one of that token; makes the directory if it is
 * missing.
 *
 * @param token     the record's file name; unchecked, a path of 256 bytes or more gets no record
 * @param username  the record's content
 * @param expires   PINNED pins the record by the immutable attribute
 * @return 0 when the record was opened and written, pinned or not; -1 when there is none (logged,
 *         but for a record that cannot be opened) or an argument is null (logged)
 */
int UpdateLocalSessionRecords(const char* token, const char* username, const char* expires);
