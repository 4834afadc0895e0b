// What a strict build refuses, by std::string and loops only.
#include "tools/fuzz/strict.h"
#include "tools/fuzz/targets.h"

#include <glib.h>
#include <pwd.h>

#include <algorithm>

namespace {

bool isUtf8(const std::string& text)
{
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

/** Whether a text is of letters, digits and what is listed. */
bool isOf(const std::string& text, const std::string& listed)
{
    return std::all_of(text.begin(), text.end(), [&](char one) {
        return g_ascii_isalnum(one) || listed.find(one) != listed.npos;
    });
}

bool isName(const std::string& text)
{
    for (const char one : text) {
        if (g_ascii_iscntrl(one) || std::string("\"$&/:<>\\`").find(one) != std::string::npos) {
            return false;
        }
    }
    return text.size() <= 254 && isUtf8(text) && isUtf8(text.substr(0, 31)) &&
           !text.starts_with('-') && text != "." && text != "..";
}

bool isLegal(const std::string& parameter, const std::string& text)
{
    if (parameter == "password_hash") {
        return text.size() <= 512 && isOf(text, "+/=") && isOf(decodedBytes(text), "$./:=,");
    }
    if (parameter == "token") {
        return !text.empty() && text.size() <= 200 && isOf(text, "+-=_~");
    }
    return parameter == "expires" ? text.find_first_not_of("0123456789") == text.npos
                                  : isName(text);
}

bool isNobodys(const Case& test, const std::string& name)
{
    return !isOwnersName(test, name) && getpwnam(name.c_str()) == nullptr;
}

/** Whether a name is the member's, or may become it. */
bool isOwn(const Case& test, const std::string& parameter, const std::string& name)
{
    const std::string cut = name.substr(0, 31);
    if (parameter == "username") {
        return cut == loginOf(test) && (name == cut || isNobodys(test, name));
    }
    return (parameter != "email" && parameter != "p2pusername") ||
           (parameter == "p2pusername" && name.empty()) ||
           ((cut == loginOf(test) || isNobodys(test, cut)) && (name == cut || isNobodys(test, name))
           );
}

/** Puts something harmless in place of what forms markup, means something to a shell or ends a
 * line. */
void clean(std::string& text, std::size_t from, std::size_t to, const std::string& kept = "")
{
    for (std::size_t at = from; at < std::min(to, text.size()); ++at) {
        if (kept.find(text[at]) == kept.npos &&
            !isOf(text.substr(at, 1), " !#%'()*+,-./:;=?@[]^_{|}~")) {
            text[at] = '_';
        }
    }
}

void cleanBetween(std::string& text, const std::string& begin, const std::string& end)
{
    for (std::size_t at = 0; (at = text.find(begin, at)) != text.npos;) {
        at += begin.size();
        clean(text, at, text.find(end, at));
    }
}

} // namespace

Case trustworthy(Case test)
{
    if (test.files.owner) {
        cleanBetween(*test.files.owner, "<owner>", "</owner>");
        cleanBetween(*test.files.owner, "<p2powner>", "</p2powner>");
    }
    for (Reply& reply : test.replies) {
        if (reply.text) {
            cleanBetween(*reply.text, "<User_Id>", "</User_Id>");
            cleanBetween(*reply.text, "<Email_Address><![CDATA[", "]]></Email_Address>");
        }
    }
    for (std::string& print : test.prints) {
        clean(print, 0, print.size(), "\r\n");
    }
    return test;
}

std::string refusal(const Case& test, bool is_owner)
{
    static const std::map<std::string, std::vector<std::string>> parameters = {
        {"adduser", {"username", "password_hash", "email"}},
        {"addremoteuser", {"username"}},
        {"deleteuser", {"username", "p2pusername"}},
        {"upgradeusertosso", {"username", "email", "password_hash"}},
        {"updateuser", {"username", "password_hash", "email", "p2pusername"}},
        {"initlocalsession", {"username", "token", "expires"}}};
    std::size_t index = 0;
    for (const std::string& parameter : parameters.at(test.words[0])) {
        const std::string& value = test.words[++index];
        const std::string said = test.words[0] + " refused: " + parameter;
        if (!isLegal(parameter, value)) {
            return said + " holds what it may not";
        }
        if (!is_owner && !isOwn(test, parameter, value)) {
            return said + " is not the member's own";
        }
    }
    return "";
}

bool isLegalLogin(const std::string& login)
{
    return isName(login);
}
