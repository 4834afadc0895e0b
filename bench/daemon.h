/** An instant daemon, in place of the client library: what remains is the plug-in's own cost. */
#pragma once

#include <string>

/** What every request is answered with; the caller keeps it. */
void setReply(const std::string& reply);

/** One user record of a reply, of the group sky-hold; without an e-mail address if `bare`. */
std::string userRecord(const std::string& name, std::size_t id, bool bare = false);

/** A reply that reports success, around `content`. */
std::string successReply(const std::string& content);

/** The text of all requests since the last call, one after the other; only while recording. */
std::string takeRequests();
void recordRequests(bool on);
