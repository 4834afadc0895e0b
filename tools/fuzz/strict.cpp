#include "tools/fuzz/strict.h"

#include "common/device/owner_file.h"
#include "common/device/upgrade_flag.h"
#include "common/mxl_templates.h"
#include "devkit/boxwelld/xml.h"
#include "syscmd/sessions/record.h"
#include "tools/fuzz/targets.h"

#include <glib.h>
#include <pwd.h>

#include <algorithm>
#include <cstring>

namespace {

void finding(const std::string& seen, const char* what)
{
    expectSame(seen + '!', "", what);
}

/** As the parser sees it; which bytes make a character is not asked. */
Document parsed(std::string text)
{
    for (char& one : text) {
        one = (one & 0x80) != 0 ? '_' : one;
    }
    try {
        return parse_xml("<r xmlns:xs=\"strict\">" + text + "</r>");
    } catch (const std::exception&) {
        return {nullptr, xmlFreeDoc};
    }
}

std::string textOf(const xmlNode* node)
{
    xmlChar* text = xmlNodeGetContent(node);
    const std::string copy = text != nullptr ? reinterpret_cast<const char*>(text) : "";
    xmlFree(text);
    return copy;
}

bool isFilled(const std::string& form)
{
    return form.find("%s") != form.npos;
}

bool isLike(const xmlNode* form, const xmlNode* node);

/** Siblings in step, and none more. */
bool areLike(const xmlNode* form, const xmlNode* node)
{
    for (; form != nullptr && node != nullptr; form = form->next, node = node->next) {
        if (!isLike(form, node)) {
            return false;
        }
    }
    return form == node;
}

/** Whether a node is a template's: equal, but for the texts that stand for conversions. */
bool isLike(const xmlNode* form, const xmlNode* node)
{
    if (form->type != node->type || xmlStrcmp(form->name, node->name) != 0) {
        return false;
    }
    if (form->type != XML_ELEMENT_NODE) {
        return isFilled(textOf(form)) || textOf(form) == textOf(node);
    }
    const auto* attributes = reinterpret_cast<const xmlNode*>(form->properties);
    const bool is_empty = form->children != nullptr && isFilled(textOf(form->children)) &&
                          form->children->type != XML_ELEMENT_NODE && node->children == nullptr;
    return name_of(form) == name_of(node) && namespace_of(form) == namespace_of(node) &&
           areLike(attributes, reinterpret_cast<const xmlNode*>(node->properties)) &&
           (is_empty || areLike(form->children, node->children));
}

bool isOneOf(const std::vector<std::string>& forms, const std::string& text)
{
    static std::map<std::string, Document> known;
    const Document read = parsed(text);
    return read != nullptr && std::any_of(forms.begin(), forms.end(), [&](const std::string& form) {
               const auto parse = known.find(form) != known.end()
                                      ? known.find(form)
                                      : known.emplace(form, parsed(form)).first;
               return isLike(
                   xmlDocGetRootElement(parse->second.get()), xmlDocGetRootElement(read.get())
               );
           });
}

/** What follows the declaration, in front of which there may be a line of authorisation; nothing
 * where it does not begin so. */
std::string bodyOf(const std::string& request)
{
    static const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    const std::size_t at =
        request.starts_with("Authorization: ") ? request.find_first_of("\r\n") + 2 : 0;
    const bool is_line = at == 0 || request.compare(at - 2, 2, "\r\n") == 0;
    return is_line && request.compare(at, declaration.size(), declaration) == 0
               ? request.substr(at + declaration.size())
               : "";
}

bool isRequest(const std::string& asked)
{
    static const std::vector<std::string> forms = [] {
        std::vector<std::string> all;
        for (const char* form :
             {RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME,
              RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME_NO_PASSWORD, RENAME_ACCOUNT_NO_PASSWORD_MXL,
              GET_USER_DATA_MXL, ADD_USER_MXL, DELETE_USER_MXL, MXL_TMPL_ADD_NET, MXL_TMPL_DEL_NET,
              UNREGISTER_USER_MXL}) {
            all.push_back(bodyOf(form));
        }
        return all;
    }();
    return isOneOf(forms, bodyOf(asked));
}

/** Whether the shell sees the words of an event, and in the quoted one nothing to expand. */
bool isEvent(const std::string& command)
{
    gchar** words = nullptr;
    gint count = 0;
    std::vector<std::string> read;
    if (g_shell_parse_argv(command.c_str(), &count, &words, nullptr) != FALSE) {
        read.assign(words, words + count);
        g_strfreev(words);
    }
    std::string quoted = between(command, " \"", "\" 0 0");
    for (std::size_t at = 0; (at = quoted.find("\\\"", at)) != quoted.npos;) {
        quoted.erase(at, 2);
    }
    return read.size() == 6 && quoted.find_first_of("\"$`\\") == quoted.npos &&
           command == "/usr/bin/event_push shell boxwelld \"" + between(command, " \"", "\" 0 0") +
                          "\" 0 0" &&
           isOneOf(
               {"<xs:add-s resource-type=\"Log\" resource-id=\"Log\"><Log severity=\"warning\" "
                "message-tag=\"LOGMSG_SKYHOLD_RENAME_LOCAL_USER_IF_EXIST\" category=\"system\">"
                "<args user=\"%s\" newuser=\"%s\" clouduser=\"%s\"/></Log></xs:add-s>"},
               read[3]
           );
}

bool isCommand(const std::string& asked)
{
    static const std::set<std::string> fixed = {
        "boxwellinfo Model", "boxwellinfo Firmware_Version", "boxwellinfo Firmware_Time",
        "boxwellinfo Serial",
        "cat /opt/linkhub/etc/linkagent.conf | grep link_agent_id | cut -c 12-"};
    return fixed.contains(asked) || isEvent(asked);
}

bool isOwnerFile(const std::string& text)
{
    std::vector<std::string> forms;
    for (const char* agent : {"", "<link_agent_id>%s</link_agent_id>"}) {
        for (const char* remote : {"", "<p2powner>%s</p2powner>"}) {
            forms.push_back(
                "<registration><owner>%s</owner><model>%s</model><firmware_id>%s</firmware_id>"
                "<firmware_time>%s</firmware_time><serial>%s</serial>" +
                std::string(agent) + remote + "</registration>"
            );
        }
    }
    static const std::string declaration = "<?xml version=\"1.0\" encoding=\"utf-8\"?>";
    return text.starts_with(declaration) && isOneOf(forms, text.substr(declaration.size()));
}

void judgeWriting(const char* path)
{
    static const std::string sessions = LOCAL_SESSION_DIRECTORY "/";
    const std::string name = std::string(path).starts_with(sessions) ? path + sessions.size() : "";
    const bool is_record =
        !name.empty() && name != "." && name != ".." && name.find('/') == name.npos;
    if (!is_record && path != std::string(OWNER_FILE) && path != std::string(SSO_UPGRADE_FLAG) &&
        path != std::string("/var/log/shbroker.log")) {
        finding(path, "a path");
    }
}

/** An entry of a unit that has texts of the command, but none of the daemon's, in its statements.
 */
void judgeEntry(const char* file, const char* text)
{
    static const std::set<std::string> units = {
        "access.cpp",        "execute.cpp",    "strict.cpp",          "adduser.cpp",
        "addremoteuser.cpp", "deleteuser.cpp", "updateuser.cpp",      "upgradeusertosso.cpp",
        "conflicts.cpp",     "record.cpp",     "initlocalsession.cpp"};
    const std::string unit = strstr(file, "=") + 1, entry = text;
    if (!units.contains(unit)) {
        return;
    }
    const std::string level = entry.substr(0, entry.find(':') + 1);
    const bool is_own = entry.starts_with(level + unit + ':');
    if (!is_own ||
        std::any_of(entry.begin(), entry.end(), [](char one) { return g_ascii_iscntrl(one); })) {
        finding(entry, "a forged entry");
    }
    if (unit == "strict.cpp" && level == "ERROR:") {
        device.refusal += between(entry, "ERROR [syscmd:checkParameters]: ", "\n");
    }
}

/** The names and numbers of accounts that a request gives. */
std::vector<std::string> namesIn(const std::string& asked)
{
    return {
        between(asked, "<xs:value><![CDATA[", "]]>"), between(asked, "UserName=\"", "\""),
        between(asked, "<User_Name>", "</User_Name>")};
}

bool isAnothers(const Case& test, const std::string& name)
{
    const std::string login = loginOf(test);
    const auto is_known = [&](const std::string& one) {
        return one != login && (isOwnersName(test, one) || getpwnam(one.c_str()) != nullptr);
    };
    return !name.empty() && (is_known(name) || is_known(name.substr(0, 31)));
}

} // namespace

void watchStrictly()
{
    on_writing = judgeWriting;
    on_entry = judgeEntry;
}

void expectStructure(const Outcome& outcome, const Files& before)
{
    for (const std::string& asked : outcome.asked) {
        const bool is_request = asked.starts_with("<?xml") || asked.starts_with("Authorization:");
        if (is_request ? !isRequest(asked) : !isCommand(asked)) {
            finding(asked, is_request ? "a request" : "a shell command");
        }
    }
    const std::string owner = outcome.files.owner.value_or("");
    const bool is_whole = outcome.files.owner != before.owner && owner.ends_with("</registration>");
    if (is_whole && !isOwnerFile(owner)) {
        finding(owner, "an owner file");
    }
}

void expectOwnAccount(const Case& test, const Outcome& outcome)
{
    if (isOwnersOwn(test)) {
        return;
    }
    for (const std::string& asked : outcome.asked) {
        for (const std::string& name : namesIn(asked)) {
            if (isAnothers(test, name)) {
                finding(asked, "another's name");
            }
        }
        const std::string id = between(asked, "<User_Id>", "</User_Id>") +
                               between(asked, "<xs:delete id=\"opid\" resource-id=\"", "\"");
        const passwd* account = test.replies.size() < 2 && id != "7" && !id.empty()
                                    ? getpwuid(static_cast<uid_t>(std::stoul(id)))
                                    : nullptr;
        if (account != nullptr && account->pw_name != loginOf(test)) {
            finding(asked, "another's number");
        }
    }
    for (const auto& [name, record] : outcome.files.records) {
        const auto former = test.files.records.find(name);
        if ((former == test.files.records.end() || former->second.content != record.content) &&
            record.content != loginOf(test)) {
            finding(record.content, "another's session");
        }
    }
    expectSame(
        outcome.files.owner.value_or(""), test.files.owner.value_or(""), "a member's owner file"
    );
}
