/** An instant daemon, in place of the client library: what remains is the plug-in's own cost. */
#pragma once

#include <string>

/** What every request is answered with; the caller keeps it. */
void setReply(const std::string& reply);

/** The reply's user records, `count` of them: user0, user1, …; without e-mail addresses if `bare`.
 */
std::string userRecords(std::size_t count, bool bare = false);

/** A reply that reports success, around `content`. */
std::string successReply(const std::string& content);

/** The text of all requests since the last call, one after the other; only while recording. */
std::string takeRequests();
void recordRequests(bool on);
