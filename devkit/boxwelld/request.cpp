#include "devkit/boxwelld/request.h"

#include "devkit/boxwelld/account.h"

#include <string_view>

namespace {

std::string_view without_authorization(std::string_view text)
{
    if (!text.starts_with("Authorization: ")) {
        return text;
    }
    const std::size_t end = text.find("\r\n");
    if (end == std::string_view::npos) {
        throw Refusal("Malformed request: the authorization line has no end");
    }
    return text.substr(end + 2);
}

} // namespace

Request read_request(const std::string& text, Envelope& envelope)
{
    Request request{parse_xml(without_authorization(text))};
    const xmlNode* root = xmlDocGetRootElement(request.document.get());
    envelope.schema = namespace_of(root);
    if (name_of(root) != "mxl" || !envelope.schema.ends_with(SCHEMA_PATH)) {
        throw Refusal("Unknown document " + name_of(root));
    }
    envelope.source = attribute(root, "src");
    expect(root, "dst", "nas");
    const xmlNode* transaction = only_child(root, envelope.schema.c_str(), "transaction");
    envelope.transaction_id = attribute(transaction, "id");
    const std::vector<xmlNode*> operations = children(transaction);
    if (operations.size() != 1 || namespace_of(operations[0]) != envelope.schema) {
        throw Refusal("transaction must hold one operation");
    }
    envelope.operation_id = attribute(operations[0], "id");
    request.operation = operations[0];
    return request;
}
