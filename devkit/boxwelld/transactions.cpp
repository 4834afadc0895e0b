#include "devkit/boxwelld/transactions.h"

#include "devkit/boxwelld/reply.h"
#include "devkit/boxwelld/request.h"
#include "devkit/boxwelld/stages.h"

#include <charconv>

namespace {

using Records = std::vector<Account>;

std::int64_t to_id(const std::string& text)
{
    std::int64_t id = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, id);
    if (error != std::errc() || rest != end) {
        throw Refusal("Invalid user id " + text);
    }
    return id;
}

std::optional<bool> to_flag(const std::optional<std::string>& text)
{
    if (text && *text != "0" && *text != "1") {
        throw Refusal("IsLocked is neither 0 nor 1");
    }
    return text ? std::optional(*text == "1") : std::nullopt;
}

/** What an add or a set says about its account. */
AccountFields fields_of(const xmlNode* user)
{
    expect(user, "resource-type", "User");
    expect_children(
        user, RESOURCES,
        {"User_Id", "User_Name", "SmbHash", "SysHash", "Group_Name", "Email_Address", "P2PUserName",
         "IsLocked"}
    );
    return {
        .name = field(user, "User_Name"),
        .group = field(user, "Group_Name"),
        .locked = to_flag(field(user, "IsLocked")),
        .email = field(user, "Email_Address"),
        .smb_hash = field(user, "SmbHash"),
        .sys_hash = field(user, "SysHash"),
        .p2p_user_name = field(user, "P2PUserName"),
    };
}

const xmlNode* user_of_collection(const xmlNode* operation)
{
    return only_child(only_child(operation, RESOURCES, "User_Collection"), RESOURCES, "User");
}

void expect_user_collection(const xmlNode* operation)
{
    expect(operation, "c-resource-id", "Users");
    expect(operation, "c-resource-type", "User_Collection");
}

/** The page of a query is taken and not applied: every record is given. */
Records query_accounts(const xmlNode* operation, Store& store)
{
    const std::string schema = namespace_of(operation);
    expect_children(operation, schema.c_str(), {"qualifier", "criterion"});
    const xmlNode* criterion = children(operation).empty() ? operation : children(operation).back();
    const std::vector<xmlNode*> tests = children(criterion);
    const std::string kind = tests.size() == 1 ? name_of(tests[0]) : "";
    if (name_of(criterion) != "criterion" || (kind != "equal" && kind != "like")) {
        throw Refusal("query must end with one criterion, equal or like");
    }
    const std::string property = attribute(tests[0], "property");
    if (property != "/User/User_Name/" && property != "/User/Email_Address/") {
        throw Refusal("query asks for the unknown property " + property);
    }
    return store.find_accounts(
        property == "/User/User_Name/" ? Property::UserName : Property::EmailAddress,
        kind == "equal" ? Match::Equal : Match::Like,
        kind == "equal" ? text_of(only_child(tests[0], schema.c_str(), "value"))
                        : attribute(tests[0], "value")
    );
}

Records add_account(const xmlNode* operation, Store& store)
{
    expect_user_collection(operation);
    const xmlNode* user = user_of_collection(operation);
    expect(user, "id", "0");
    if (!field(user, "User_Id").value_or("").empty()) {
        throw Refusal("The id of a new user is not chosen by the request");
    }
    store.add_account(fields_of(user));
    return {};
}

Records set_account(const xmlNode* operation, Store& store)
{
    expect(operation, "resource-id", "Users");
    const xmlNode* user = user_of_collection(operation);
    const std::string id = attribute(user, "id");
    expect(user, "resource-id", id);
    if (field(user, "User_Id").value_or(id) != id) {
        throw Refusal("User_Id is not the id of its record");
    }
    store.set_account(to_id(id), fields_of(user));
    return {};
}

Records delete_account(const xmlNode* operation, Store& store)
{
    expect_user_collection(operation);
    expect_children(operation, RESOURCES, {"keep_home_folder"});
    store.delete_account(to_id(attribute(operation, "resource-id")));
    return {};
}

Records add_remote_user(const xmlNode* operation, Store& store)
{
    const xmlNode* user = only_child(operation, RESOURCES, "User");
    store.add_remote_user({attribute(user, "UserName"), attribute(user, "FullName")});
    return {};
}

Records delete_remote_user(const xmlNode* operation, Store& store)
{
    store.delete_remote_user(attribute(only_child(operation, RESOURCES, "User"), "UserName"));
    return {};
}

Records set_cloud_owner(const xmlNode* operation, Store& store)
{
    expect(operation, "resource-id", "CloudOwner");
    const xmlNode* user = only_child(operation, RESOURCES, "User");
    expect_children(user, RESOURCES, {"User_Name", "Password", "Confirm", "Keep_Home_Folder"});
    store.set_cloud_owner(field(user, "User_Name").value_or(""));
    return {};
}

constexpr struct Operation {
    std::string_view name;
    std::string_view resource_type;
    bool changes;
    Records (*run)(const xmlNode* operation, Store& store);
} OPERATIONS[] = {
    {"query", "User_Collection", false, query_accounts},
    {"add", "User", true, add_account},
    {"set", "User_Collection", true, set_account},
    {"delete", "User", true, delete_account},
    {"add", "User:Remote:App", true, add_remote_user},
    {"delete", "User:Remote:App", true, delete_remote_user},
    {"set", "CloudOwner", true, set_cloud_owner},
};

const Operation& find_operation(const xmlNode* operation)
{
    const std::string name = name_of(operation);
    const std::string type = attribute(operation, "resource-type");
    for (const Operation& known : OPERATIONS) {
        if (known.name == name && known.resource_type == type) {
            return known;
        }
    }
    throw Refusal("Unknown operation " + name + " of resource type " + type);
}

} // namespace

std::string carry_out(Store& store, const std::string& text)
{
    Envelope envelope;
    try {
        const Timed reading(Stage::Request);
        const Request request = read_request(text, envelope);
        const Operation& operation = find_operation(request.operation);
        Records records;
        const auto run = [&] {
            records = operation.run(request.operation, store);
        };
        {
            const Timed timed(Stage::Database);
            if (operation.changes) {
                store.change(run);
            } else {
                run();
            }
        }
        const Timed replying(Stage::Reply);
        return success_reply(envelope, records);
    } catch (const std::exception& failure) {
        return failure_reply(envelope, failure.what());
    }
}

std::string refuse(const std::string& text, const std::optional<std::string>& detail)
{
    Envelope envelope;
    try {
        read_request(text, envelope);
    } catch (const Refusal&) { // the envelope holds what there is
    }
    return failure_reply(envelope, detail);
}
