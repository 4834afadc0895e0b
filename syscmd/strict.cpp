#include "syscmd/strict.h"

#include "common/account_name.h"
#include "common/base64.h"
#include "common/isowner.h"
#include "common/log.h"
#include "liblst/owned.h"
#include "syscmd/access.h"
#include "syscmd/operations.h"

#include <glib.h>
#include <pwd.h>

namespace {

constexpr std::size_t LONGEST_NAME = 254, LONGEST_PAIR = 512, LONGEST_TOKEN = 200;

/** What a statement calls a parameter, by its number. */
constexpr char NAMES[][14] = {"",      "username", "email", "p2pusername", "password_hash",
                              "token", "expires"};

/** Whether each byte of a text is of a kind or listed; `are` false: whether none is. */
bool each(std::string_view text, GAsciiType kind, const char* listed, bool are = true)
{
    for (const char c : text) {
        const bool is_kind = (g_ascii_table[static_cast<guchar>(c)] & kind) != 0;
        if ((is_kind || (c != '\0' && strchr(listed, c) != nullptr)) != are) {
            return false;
        }
    }
    return true;
}

bool isName(std::string_view text)
{
    return text.size() <= LONGEST_NAME && each(text, G_ASCII_CNTRL, "\"$&/:<>\\`", false) &&
           g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE &&
           (text.size() <= MAX_USERNAME_LENGTH || (text[MAX_USERNAME_LENGTH] & 0xC0) != 0x80) &&
           text.data()[0] != '-' && strcmp(text.data(), ".") != 0 && strcmp(text.data(), "..") != 0;
}

/** Whether Base64 of LONGEST_PAIR at most decodes to what a pair of hashes is made of. */
bool isPair(std::string_view base64)
{
    guchar bytes[LONGEST_PAIR];
    gint state = 0;
    guint save = 0;
    const gsize size = g_base64_decode_step(base64.data(), base64.size(), bytes, &state, &save);
    return each({reinterpret_cast<char*>(bytes), size}, G_ASCII_ALNUM, "$./:=,");
}

/** Whether nobody bears a name, neither an account nor the owner; of a look-up that fails, no. */
bool isNobodys(const char* name)
{
    char buffer[1024];
    passwd entry = {};
    passwd* found = nullptr;
    return isOwner(name) == 0 && getpwnam_r(name, &entry, buffer, sizeof buffer, &found) == 0 &&
           found == nullptr;
}

/** Whether a member of that login may give this name: of names of accounts his own alone, or for an
 * e-mail address and a peer-to-peer user nobody's. Names are cut for some uses and whole for
 * others. */
bool isOwn(Parameter parameter, const char* name, const char* login)
{
    char cut[MAX_USERNAME_LENGTH + 1] = "";
    strncat(cut, name, MAX_USERNAME_LENGTH);
    return parameter > Parameter::P2pUser || (parameter == Parameter::P2pUser && *name == '\0') ||
           ((strcmp(cut, login) == 0 || (parameter != Parameter::User && isNobodys(cut))) &&
            (strlen(name) <= MAX_USERNAME_LENGTH || isNobodys(name)));
}

} // namespace

std::array<char, 1024> escaped(const char* text)
{
    std::array<char, 1024> shown = {};
    char* to = shown.data();
    for (; *text != '\0' && to < shown.end() - 5; ++text) {
        to +=
            snprintf(to, 5, g_ascii_iscntrl(*text) ? "\\x%02x" : "%c", static_cast<guchar>(*text));
    }
    return shown;
}

bool mayHold(Parameter parameter, std::string_view value)
{
    switch (parameter) {
    case Parameter::Pair:
        return value.size() <= LONGEST_PAIR && each(value, G_ASCII_ALNUM, "+/=") && isPair(value);
    case Parameter::Token:
        return !value.empty() && value.size() <= LONGEST_TOKEN &&
               each(value, G_ASCII_ALNUM, "+-=_~");
    case Parameter::Expiry:
        return each(value, G_ASCII_DIGIT, "");
    default:
        return parameter != Parameter::None && isName(value);
    }
}

bool checkParameters(const ITransaction& tx, std::span<const std::string> values)
{
    std::string name;
    tx.getRequestParam(0, name);
    const Operation* operation = findOperation(name);
    std::string credentials;
    tx.getAuthInfo(credentials); // none are an empty text
    AUTO_FREE char* login = ptDecodeBase64(credentials.c_str());
    if (operation == nullptr || login == nullptr) {
        return false; // GCOV_EXCL_LINE: another plug-in's call of a handler, or no memory
    }
    cutLogin(login);
    const bool is_owner = isOwner(login) != 0;

    const Parameter* parameter = operation->parameters.data();
    for (const std::string& value : values) {
        const char* shown = NAMES[static_cast<std::size_t>(*parameter)];
        if (!mayHold(*parameter, value)) {
            LOG(Error, "ERROR [syscmd:%s]: %s refused: %s holds what it may not\n", __func__,
                operation->name, shown);
            return false;
        }
        if (!is_owner && !isOwn(*parameter, value.c_str(), login)) {
            LOG(Error, "ERROR [syscmd:%s]: %s refused: %s is not the member's own\n", __func__,
                operation->name, shown);
            return false;
        }
        ++parameter;
    }
    return true;
}
