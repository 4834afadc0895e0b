#include "bench/commands.h"

#include "bench/daemon.h"

#include <glib.h>

#include <cstring>

std::vector<Command> commands()
{
    const std::string pair = "N0M0MUQwOUE6JDEkUWE3TG0yWHAkWnI0LmhUOXdZYzFLYk4zc1ZlOEZvMA==";
    const std::string email = "bob@example.com";
    return {
        {{"adduser", "bob", pair, email}, "alice:secret"},
        {{"addremoteuser", "bob"}, "alice:secret"},
        {{"deleteuser", "bob", email}, "bob:secret"},
        {{"unregister"}, ""},
        {{"updateuser", "bob", pair, email, email}, "bob:secret"},
        {{"upgradeusertosso", "bob", email, pair}, "alice:secret"},
        {{"initlocalsession", "bob", "token", "86400"}, "alice:secret"},
    };
}

const std::string& replyToCommands()
{
    static const std::string text = successReply(userRecord("bob", 1002));
    return text;
}

PlainTransaction transactionOf(const Command& command, int level)
{
    PlainTransaction transaction;
    transaction.params = command.params;
    gchar* encoded =
        g_base64_encode(reinterpret_cast<const guchar*>(command.login), std::strlen(command.login));
    transaction.credentials = encoded;
    g_free(encoded);
    transaction.log_level = level;
    return transaction;
}
