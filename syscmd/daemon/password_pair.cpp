#include "syscmd/daemon/password_pair.h"

#include "common/base64.h"
#include "common/result.h"

#include <cstring>

int decodePasswordPair(char** text, PasswordPair* pair, const char* base64)
{
    *text = ptDecodeBase64(base64);
    char* colon = *text == nullptr ? nullptr : strchr(*text, ':');
    if (colon == nullptr) {
        return -1;
    }
    *colon = '\0';
    *pair = {*text, colon + 1};
    return SUCCESS;
}
