/** Who asks. */
#pragma once

/** Ends decoded credentials behind the login: at the first colon, MAX_USERNAME_LENGTH bytes at
 * most. Without a colon the whole text is the login, however long. */
void cutLogin(char* credentials);
