#include "devkit/boxwelld/reply.h"

#include "devkit/boxwelld/xml.h"

namespace {

// In replies to what could not be read.
constexpr char DEFAULT_HOST[] = "http://boxwelld.example.com";

std::string cdata(const std::string& name, const std::string& text)
{
    return '<' + name + "><![CDATA[" + text + "]]></" + name + '>';
}

std::string record(const Account& account)
{
    const std::string id = std::to_string(account.id);
    return "<User id=\"" + id + "\" resource-id=\"" + id + "\" resource-type=\"User\"><User_Id>" +
           id + "</User_Id>" + cdata("User_Name", account.name) +
           cdata("Group_Name", account.group) + cdata("Email_Address", account.email) +
           cdata("P2PUserName", account.p2p_user_name) + "<IsLocked>" +
           (account.locked ? '1' : '0') + "</IsLocked></User>";
}

std::string response(const Envelope& envelope, const char* status, const std::string& body)
{
    const std::string schema =
        envelope.schema.empty() ? std::string(DEFAULT_HOST) + SCHEMA_PATH : envelope.schema;
    return R"(<?xml version="1.0" encoding="UTF-8"?><xs:mxl xmlns:xs=")" + escaped(schema) +
           "\" xmlns=\"" + RESOURCES + R"(" src="nas" dst=")" + escaped(envelope.source) +
           R"("><xs:transaction id=")" + escaped(envelope.transaction_id) +
           R"("><xs:response id=")" + escaped(envelope.operation_id) + R"(" status=")" + status +
           "\">" + body + "</xs:response></xs:transaction></xs:mxl>";
}

/** A text that one CDATA section can hold. */
std::string fit_for_cdata(std::string text)
{
    for (std::size_t at = 0; (at = text.find("]]>", at)) != std::string::npos; at += 2) {
        text.insert(at + 2, " ");
    }
    return text;
}

} // namespace

std::string success_reply(const Envelope& envelope, const std::vector<Account>& records)
{
    std::string body;
    for (const Account& account : records) {
        body += record(account);
    }
    return response(envelope, "success", body);
}

std::string failure_reply(const Envelope& envelope, const std::optional<std::string>& detail)
{
    return response(
        envelope, "failure", detail ? cdata("xs:error-details", fit_for_cdata(*detail)) : ""
    );
}
