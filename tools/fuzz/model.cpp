// What a command has to do, by std::string and loops only.
#include "common/mxl_templates.h"
#include "syscmd/strict.h"
#include "tools/fuzz/device.h"
#include "tools/fuzz/strict.h"
#include "tools/fuzz/targets.h"

#include <grp.h>
#include <pwd.h>
#include <strings.h>

#include <cstdlib>

namespace {

using Text = std::optional<std::string>;

constexpr char DONE[] = "success";
constexpr char UNREAD[] = "error reading username/password/email params from request";

std::string cut31(const std::string& text)
{
    return read(text.substr(0, 31));
}

bool isSuccess(const Text& reply)
{
    return reply && between(between(*reply, "<xs:response", "<"), "status=\"", "\">") == DONE;
}

Text idOf(const std::string& name)
{
    const passwd* entry = getpwnam(name.c_str());
    return entry != nullptr ? Text(std::to_string(static_cast<int>(entry->pw_uid))) : Text();
}

bool isMemberBy(const Text& reply)
{
    if (!reply || strtol(between(*reply, "<IsLocked>", "</IsLocked>").c_str(), nullptr, 10) != 0) {
        return false;
    }
    const std::string name = cdata(*reply, "User_Name");
    const passwd* user = getpwnam(name.c_str());
    const group* cloud = getgrnam("sky-hold");
    bool is_member = user != nullptr && user->pw_gid == cloud->gr_gid;
    for (char** member = cloud->gr_mem; user != nullptr && *member != nullptr; ++member) {
        is_member = is_member || *member == name;
    }
    return is_member;
}

struct UserData {
    std::string id, group, email;
};

struct Model {
    const Case& test;
    Outcome told = {};
    std::size_t requests = 0;
    std::size_t tools = 0;

    std::string word(std::size_t index) const { return read(test.words[index]); }
    std::string name(std::size_t index) const { return cut31(test.words[index]); }

    /** Fills the template's %s in turn, and asks the daemon. */
    Text ask(const std::string& form, const std::vector<std::string>& values)
    {
        std::string request;
        std::size_t used = 0;
        for (std::size_t at = 0; at < form.size(); ++at) {
            const bool is_value = form.compare(at, 2, "%s") == 0;
            request += is_value ? values.at(used++) : form.substr(at, 1);
            at += is_value ? 1 : 0;
        }
        told.asked.push_back(request);
        const Reply reply = test.reply(requests++, request);
        return reply.fails ? Text() : reply.text;
    }

    bool isMember()
    {
        const std::string login = loginOf(test);
        return (!STRICT || isLegalLogin(login)) &&
               isMemberBy(ask(GET_USER_DATA_MXL, {"", login, ""}));
    }

    std::optional<UserData> userData(const std::string& user)
    {
        const Text reply = ask(GET_USER_DATA_MXL, {"", user, ""});
        std::optional<UserData> last;
        std::size_t at = 0;
        while (isSuccess(reply) && (at = reply->find("<User id=", at + 1)) != std::string::npos) {
            const std::string rest = reply->substr(at), known = cdata(rest, "User_Name");
            last = {
                between(rest, "<User_Id>", "</User_Id>"), cdata(rest, "Group_Name"),
                cdata(rest, "Email_Address")};
            if (!last->id.empty() && !last->group.empty() &&
                (known == user || known.find("leafuser_") == 0)) {
                return last;
            }
            last->id = "";
        }
        return last;
    }

    bool deleteUser(const std::string& user, const std::string& remote, bool any)
    {
        std::optional<UserData> data = userData(user);
        if (!data) {
            return false;
        }
        data->id = data->id.empty() ? idOf(user).value_or("") : data->id;
        if (data->id.empty() && data->group.empty() && user.find('@') != user.npos) {
            ask(MXL_TMPL_DEL_NET, {remote});
            return false;
        }
        if (data->id.empty() || (!any && data->group != "sky-hold")) {
            return true;
        }
        const bool deleted = isSuccess(ask(DELETE_USER_MXL, {data->id}));
        if (deleted) {
            ask(MXL_TMPL_DEL_NET, {remote});
        }
        return deleted;
    }

    Text inOwnerFile(const std::string& tag) const
    {
        const std::string file = test.files.owner.value_or("");
        return !file.empty() ? Text(between(read(file), '<' + tag + '>', "</" + tag + '>'))
                             : Text();
    }

    bool update(
        const std::string& id,
        const std::string& user,
        const Text& hashes,
        const std::string& group,
        const std::string& email,
        const Text& remote
    )
    {
        const Text owner = inOwnerFile("owner");
        const std::vector<std::string> pair = pairOf(hashes.value_or(""));
        if (!owner || (hashes && pair.empty())) {
            return false;
        }
        std::vector<std::string> values = {cut31(*owner), id, id, id, user};
        values.insert(values.end(), pair.begin(), pair.end());
        if (!remote) {
            values.push_back(email);
            return isSuccess(ask(RENAME_ACCOUNT_NO_PASSWORD_MXL, values));
        }
        values.insert(values.end(), {group, email, *remote});
        return isSuccess(
            ask(hashes ? RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME
                       : RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME_NO_PASSWORD,
                values)
        );
    }

    /** The first line that a tool prints, without its end, as a buffer of `size` bytes holds it. */
    std::string print(const std::string& command, std::size_t size)
    {
        told.asked.push_back(command);
        const std::string printed = test.printed(tools++);
        return read(printed.substr(0, std::min(printed.find('\n'), size - 1)));
    }

    bool writeOwnerFile(const std::string& owner, const Text& remote)
    {
        std::string file =
            "<?xml version=\"1.0\" encoding=\"utf-8\"?><registration><owner>" + owner + "</owner>";
        const std::pair<std::string, std::string> elements[] = {
            {"Model", "model"},
            {"Firmware_Version", "firmware_id"},
            {"Firmware_Time", "firmware_time"},
            {"Serial", "serial"}};
        for (const auto& [key, tag] : elements) {
            std::string value = print("boxwellinfo " + key, 1024);
            value = value.substr(0, value.find_last_not_of('\r') + 1);
            if (value.empty() || value.find("ERROR:") != value.npos ||
                value.find("error:") != value.npos) {
                told.files.owner = {};
                return false;
            }
            file += '<' + tag + '>' + value + "</" + tag + '>';
        }
        std::string id =
            print("cat /opt/linkhub/etc/linkagent.conf | grep link_agent_id | cut -c 12-", 256);
        id = id.substr(0, id.find_first_of(" \r"));
        file += id.empty() ? "" : "<link_agent_id>" + id + "</link_agent_id>";
        told.files.owner =
            file + (remote ? "<p2powner>" + *remote + "</p2powner>" : "") + "</registration>";
        return true;
    }

    bool moveAside(const std::string& user, const std::string& for_whom)
    {
        const std::optional<UserData> data = userData(user);
        if (!data || data->id.empty()) {
            return true;
        }
        srand(1772600767);
        std::string derived = user.substr(0, 27);
        for (int digit = 0; digit < 4; ++digit) {
            derived += "0123456789abcdef"[rand() % 16];
        }
        const bool renamed = update(data->id, derived, {}, "", data->email, {});
        told.asked.push_back(
            R"(/usr/bin/event_push shell boxwelld "<xs:add-s resource-type=\"Log\" resource-id=\"Log\"><Log severity=)"
            R"(\"warning\" message-tag=\"LOGMSG_SKYHOLD_RENAME_LOCAL_USER_IF_EXIST\" category=\"system\"><args user=\")" +
            user + R"(\" newuser=\")" + derived + R"(\" clouduser=\")" + for_whom +
            R"(\"/></Log></xs:add-s>" 0 0)"
        );
        return renamed;
    }

    // The operations: their responses.
    std::string addUser()
    {
        deleteUser(word(1), word(1), false);
        const std::vector<std::string> pair = pairOf(word(2));
        const bool added =
            !pair.empty() &&
            isSuccess(ask(ADD_USER_MXL, {"User", name(1), pair[0], pair[1], "sky-hold", word(3)}));
        return added ? DONE : "AddUser failed";
    }
    std::string addRemote()
    {
        const Text reply = ask(MXL_TMPL_ADD_NET, {"", word(1)});
        const bool present =
            cdata(reply.value_or(""), "xs:error-details").find("User already present") !=
            std::string::npos;
        return isSuccess(reply) || present ? DONE : "system command failed";
    }
    std::string deleteAccount()
    {
        const bool deleted = deleteUser(name(1), word(2), true);
        return deleted || test.words[1].find('@') != std::string::npos ? DONE : "DeleteUser failed";
    }
    std::string updateUser()
    {
        const std::string user = name(1), new_name = name(3), remote = word(4);
        bool resolved = true;
        if (remote != new_name) {
            resolved = user == new_name || moveAside(new_name, new_name);
            resolved = moveAside(remote, new_name);
        }
        const Text id = idOf(user);
        if (!resolved || !id) {
            return !resolved ? "UpdateUser failed"
                             : "UpdateUser failed: unable to get local user id";
        }
        const bool is_owner = inOwnerFile("owner") == user;
        const bool updated =
            update(*id, new_name, word(2), is_owner ? "admin" : "sky-hold", word(3), remote);
        return updated && (!is_owner || writeOwnerFile(new_name, inOwnerFile("p2powner")))
                   ? DONE
                   : "UpdateUser failed";
    }
    std::string upgradeUser()
    {
        const Text id = idOf(word(1));
        if (!id) {
            return "UpgradeUserToSSO: failed retrieve local user by username:" + test.words[1];
        }
        const bool is_owner = inOwnerFile("owner") == word(1);
        bool done = update(
            *id, name(2), test.words[3].empty() ? Text() : word(3), is_owner ? "admin" : "sky-hold",
            word(2), word(1)
        );
        done = (!is_owner || writeOwnerFile(name(2), word(1))) && done;
        told.files.upgraded = true;
        return done ? DONE : "UpgradeUserToSSO: error upgrading p2p user:" + test.words[1];
    }
    std::string openSession()
    {
        foretellSession(told.files, name(1), word(2), test.words[3] == "0");
        return DONE;
    }

    std::string response()
    {
        static const struct {
            std::string name;
            std::size_t parameters;
            bool is_owners;
            std::string unread;
            std::string (Model::*work)();
        } operations[] = {
            {"adduser", 3, true, std::string("Add User: ") + UNREAD, &Model::addUser},
            {"addremoteuser", 1, true, std::string("AddRemoteUser: ") + UNREAD, &Model::addRemote},
            {"deleteuser", 2, false,
             "Delete User: error reading username/password params from request",
             &Model::deleteAccount},
            {"updateuser", 4, false, std::string("Update User: ") + UNREAD, &Model::updateUser},
            {"upgradeusertosso", 3, false, std::string("UpgradeUserToSSO: ") + UNREAD,
             &Model::upgradeUser},
            {"initlocalsession", 3, false,
             "InitLocalSession: error reading username/token/sessionid/seed params from request",
             &Model::openSession}};
        for (const auto& operation : operations) {
            if (test.words.empty() || test.words[0] != operation.name) {
                continue;
            }
            const bool is_owner = isOwnersOwn(test);
            if (!is_owner && !isMember()) {
                return "access denied";
            }
            if (operation.is_owners && !is_owner) {
                return "operation unknown";
            }
            if (test.words.size() <= operation.parameters) {
                return operation.unread;
            }
            told.refusal = STRICT ? refusal(test, is_owner) : "";
            return told.refusal.empty() ? (this->*operation.work)() : operation.unread;
        }
        if (!test.words.empty() && test.words[0] == "unregister") {
            return isSuccess(ask(UNREGISTER_USER_MXL, {})) ? "system command failed"
                                                           : "unregister operation failed";
        }
        return test.words.empty() ? "getRequestParam() failed" : "operation unknown";
    }
};

} // namespace

Outcome foretold(const Case& test)
{
    Model model{test};
    model.told.files = test.files;
    const std::string response = model.response();
    const bool unregistered =
        !test.words.empty() && test.words[0] == "unregister" && response.find("system") == 0;
    model.told.responses = {response};
    model.told.code = response == DONE ? CODE_SUCCEED : unregistered ? CODE_NOREPLY : CODE_FAILED;
    return model.told;
}

std::string loginOf(const Case& test)
{
    const std::string login = read(test.credentials.value_or(""));
    const std::size_t colon = login.find(':');
    return colon == login.npos ? login : cut31(login.substr(0, colon));
}

bool isOwnersName(const Case& test, const std::string& name)
{
    const std::string file = read(test.files.owner.value_or(""));
    return !test.files.owner.value_or("").empty() &&
           (strcasecmp(cut31(between(file, "<owner>", "</owner>")).c_str(), name.c_str()) == 0 ||
            strcasecmp(between(file, "<p2powner>", "</p2powner>").c_str(), name.c_str()) == 0);
}

bool isOwnersOwn(const Case& test)
{
    return isOwnersName(test, loginOf(test));
}

bool isMembersOwn(const Case& test)
{
    return Model{test}.isMember();
}

void foretellSession(Files& files, const std::string& user, const std::string& token, bool pinned)
{
    constexpr long DAY = 86400;
    for (auto [name, record] : std::map(files.records)) {
        const std::string line = record.content.substr(
            0, std::min<std::size_t>(255, record.content.find_first_of("\r\n"))
        );
        if (pinned && !record.content.empty() && line == user) {
            record.pinned = files.records[name].pinned = false;
        }
        if (record.age > DAY && !record.pinned) {
            files.records.erase(name);
            files.objects.erase(name);
        }
    }
    const bool is_pinned = pinned && canPin();
    const auto former = files.records.find(token);
    const bool is_there = former != files.records.end();
    if (!token.empty() && token != "." && token != ".." && token.size() < 224 &&
        !(is_there && former->second.pinned)) {
        files.records[token] = {
            user, 0, is_pinned,
            !is_pinned ? 0004
            : is_there ? former->second.mode
                       : 0644};
    }
}
