#include "devkit/boxwelld/request.h"
#include "devkit/boxwelld/xml.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <string_view>

namespace {

constexpr std::string_view AUTHORIZATION = "Authorization: ";
// The address of the schema may have any host.
constexpr std::string_view SCHEMA_PATH = "/protocol/transaction/MXLSchema-0.9";
constexpr char RESOURCES[] = "urn:varden:nas:boxwelld";

std::string_view without_authorization(std::string_view text)
{
    if (!text.starts_with(AUTHORIZATION))
        return text;
    const std::size_t end = text.find("\r\n");
    if (end == std::string_view::npos)
        throw Refusal("Malformed request: the authorization line has no end");
    return text.substr(end + 2);
}

void expect(const xmlNode* node, const char* name, std::string_view value)
{
    if (attribute(node, name) != value)
        throw Refusal(name_of(node) + " has the unknown " + name + ' ' + attribute(node, name));
}

/** The one child, which has this name and namespace. */
const xmlNode* only_child(const xmlNode* node, const std::string& space, const char* name)
{
    const std::vector<xmlNode*> found = children(node);
    if (found.size() != 1 || name_of(found[0]) != name || namespace_of(found[0]) != space)
        throw Refusal(name_of(node) + " must hold one element " + name);
    return found[0];
}

/** The text of the child called `name`, or nothing; refused when there are two. */
std::optional<std::string> field(const xmlNode* node, const char* name)
{
    std::optional<std::string> value;
    for (const xmlNode* child : children(node)) {
        if (name_of(child) != name)
            continue;
        if (value)
            throw Refusal(name_of(node) + " holds " + name + " twice");
        value = text_of(child);
    }
    return value;
}

void expect_only(const xmlNode* node, std::initializer_list<std::string_view> names)
{
    for (const xmlNode* child : children(node))
        if (namespace_of(child) != RESOURCES ||
            std::find(names.begin(), names.end(), name_of(child)) == names.end())
            throw Refusal(name_of(node) + " holds the unknown element " + name_of(child));
}

std::int64_t to_id(const std::string& text)
{
    std::int64_t id = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, id);
    if (error != std::errc() || rest != end)
        throw Refusal("Invalid user id " + text);
    return id;
}

std::optional<bool> to_flag(const std::optional<std::string>& text)
{
    if (text && *text != "0" && *text != "1")
        throw Refusal("IsLocked is neither 0 nor 1");
    return text ? std::optional(*text == "1") : std::nullopt;
}

AccountFields read_fields(const xmlNode* user)
{
    expect(user, "resource-type", "User");
    expect_only(
        user, {"User_Id", "User_Name", "SmbHash", "SysHash", "Group_Name", "Email_Address",
               "P2PUserName", "IsLocked"}
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

Request read_query(const xmlNode* operation)
{
    const std::string schema = namespace_of(operation);
    const xmlNode* test = nullptr;
    for (const xmlNode* child : children(operation))
        if (name_of(child) == "criterion" && test == nullptr)
            test = children(child).size() == 1 ? children(child)[0] : nullptr;
        else if (name_of(child) != "qualifier") // pages: every record is given
            throw Refusal("query holds the unexpected element " + name_of(child));
    const std::string kind = test == nullptr ? "" : name_of(test);
    if (kind != "equal" && kind != "like")
        throw Refusal("query must hold one criterion, equal or like");
    const std::string property = attribute(test, "property");
    if (property != "/User/User_Name/" && property != "/User/Email_Address/")
        throw Refusal("query asks for the unknown property " + property);
    return QueryAccounts{
        .property = property == "/User/User_Name/" ? Property::UserName : Property::EmailAddress,
        .match = kind == "equal" ? Match::Equal : Match::Like,
        .value =
            kind == "equal" ? text_of(only_child(test, schema, "value")) : attribute(test, "value"),
    };
}

Request read_add_account(const xmlNode* operation)
{
    expect(operation, "c-resource-id", "Users");
    expect(operation, "c-resource-type", "User_Collection");
    const xmlNode* user = user_of_collection(operation);
    expect(user, "id", "0");
    if (!field(user, "User_Id").value_or("").empty())
        throw Refusal("The id of a new user is not chosen by the request");
    return AddAccount{read_fields(user)};
}

Request read_set_account(const xmlNode* operation)
{
    expect(operation, "resource-id", "Users");
    const xmlNode* user = user_of_collection(operation);
    const std::string id = attribute(user, "id");
    expect(user, "resource-id", id);
    if (field(user, "User_Id").value_or(id) != id)
        throw Refusal("User_Id is not the id of its record");
    return SetAccount{to_id(id), read_fields(user)};
}

Request read_delete_account(const xmlNode* operation)
{
    expect(operation, "c-resource-id", "Users");
    expect(operation, "c-resource-type", "User_Collection");
    expect_only(operation, {"keep_home_folder"});
    return DeleteAccount{to_id(attribute(operation, "resource-id"))};
}

Request read_add_remote_user(const xmlNode* operation)
{
    const xmlNode* user = only_child(operation, RESOURCES, "User");
    return AddRemoteUser{{attribute(user, "UserName"), attribute(user, "FullName")}};
}

Request read_delete_remote_user(const xmlNode* operation)
{
    return DeleteRemoteUser{attribute(only_child(operation, RESOURCES, "User"), "UserName")};
}

Request read_set_cloud_owner(const xmlNode* operation)
{
    expect(operation, "resource-id", "CloudOwner");
    const xmlNode* user = only_child(operation, RESOURCES, "User");
    expect_only(user, {"User_Name", "Password", "Confirm", "Keep_Home_Folder"});
    return SetCloudOwner{field(user, "User_Name").value_or("")};
}

constexpr struct {
    std::string_view operation;
    std::string_view resource_type;
    Request (*read)(const xmlNode*);
} OPERATIONS[] = {
    {"query", "User_Collection", read_query},
    {"add", "User", read_add_account},
    {"set", "User_Collection", read_set_account},
    {"delete", "User", read_delete_account},
    {"add", "User:Remote:App", read_add_remote_user},
    {"delete", "User:Remote:App", read_delete_remote_user},
    {"set", "CloudOwner", read_set_cloud_owner},
};

} // namespace

Request read_request(const std::string& text, Envelope& envelope)
{
    const Document document = parse_xml(without_authorization(text));
    const xmlNode* root = xmlDocGetRootElement(document.get());
    envelope.schema = namespace_of(root);
    if (name_of(root) != "mxl" || !envelope.schema.ends_with(SCHEMA_PATH))
        throw Refusal("Unknown document " + name_of(root));
    envelope.source = attribute(root, "src");
    expect(root, "dst", "nas");
    const xmlNode* transaction = only_child(root, envelope.schema, "transaction");
    envelope.transaction_id = attribute(transaction, "id");
    const std::vector<xmlNode*> operations = children(transaction);
    if (operations.size() != 1 || namespace_of(operations[0]) != envelope.schema)
        throw Refusal("transaction must hold one operation");
    envelope.operation_id = attribute(operations[0], "id");
    const std::string name = name_of(operations[0]);
    const std::string type = attribute(operations[0], "resource-type");
    for (const auto& known : OPERATIONS)
        if (known.operation == name && known.resource_type == type)
            return known.read(operations[0]);
    throw Refusal("Unknown operation " + name + " of resource type " + type);
}
