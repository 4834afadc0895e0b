#include "syscmd/daemon/add_user.h"

#include "liblst/owned.h"
#include "syscmd/commands/command.h"
#include "syscmd/daemon/delete_user.h"
#include "syscmd/daemon/exchange.h"
#include "syscmd/daemon/password_pair.h"
#include "syscmd/handler.h"

#include <cstring>

namespace {

constexpr ExchangeWords WORDS = {
    .file = __FILE_NAME__,
    .function = "AddUser",
    .unformatted = {533, ": asprintf failed\n"},
    .unsent = {527, ": process_request_bwdclient failed\n"},
    .unanswered = {522, ": respond is NULL\n"},
    .unread = {516, ": GetMXLStatus failed\n"},
    .undetailed = {509, ": GetMXLErrorDetail failed\n"},
};

/** Hashes of no password: the ninth character of the SMB hash is no hexadecimal digit. */
constexpr PasswordPair PLACEHOLDER = {
    "7C41D09AQ3B8E2F65A0D9C14E7B3F820", "$1$Qa7Lm2Xp$Zr4.hT9wYc1KbN3sVe8Fo0"};

void reportRefusal(const char* detail)
{
    if (strstr(detail, "already exists") != nullptr) {
        LOG_IN(WORDS.function, 498, Error, "ERROR [syscmd:AddUser]: user already exists\n");
    } else {
        LOG_IN(WORDS.function, 502, Error, "ERROR [syscmd:AddUser]: AddUser failed\n");
    }
    LOG_IN(WORDS.function, 504, Error, "ERROR [syscmd:AddUser]: MXL error %s", detail);
}

} // namespace

int AddUser(
    const char* username, const char* password_hash, const char* email, const char* resource_type
)
{
    if (username == nullptr || email == nullptr) {
        LOG_AT(435, Error, "ERROR [syscmd:AddUser]: invalid input arguments\n");
        return -1;
    }
    AUTO_FREE char* decoded = nullptr;
    PasswordPair hashes = PLACEHOLDER;
    if (password_hash != nullptr &&
        decodePasswordPair(&decoded, &hashes, password_hash) != SUCCESS) {
        LOG_AT(
            455, Error, "ERROR [syscmd:AddUser] invalid hash value %s[%s]\n",
            decoded == nullptr ? "" : decoded, password_hash
        );
        return -1;
    }
    LOG_AT(
        474, Info, "[syscmd::AddUser] username=%s, syshash=%s, smbhash=%s, email=%s", username,
        hashes.system, hashes.smb, email
    );

    AUTO_FREE char* request = nullptr;
    if (takeRequest(
            &request, WORDS,
            FORMAT_TEMPLATE(
                ADD_USER_MXL, resource_type, username, hashes.smb, hashes.system, SKYHOLD_GROUP,
                email
            )
        ) != SUCCESS) {
        return -1;
    }
    AUTO_FREE char* reply = nullptr;
    if (sendRequest(&reply, WORDS, request) != SUCCESS) {
        return -1;
    }
    AUTO_FREE char* detail = nullptr;
    switch (readOutcome(&detail, WORDS, reply)) {
    case Outcome::Done:
        return SUCCESS;
    case Outcome::Refused:
        reportRefusal(detail);
        break;
    case Outcome::Failed:
        break;
    }
    return -1;
}

namespace {

constexpr CommandWords HANDLER = {
    .file = __FILE_NAME__,
    .function = "AddAccountHandler",
    .unread = "AddUser ",
    .answer = "Add User: error reading username/password/email params from request",
    .null_line = 1295,
    .unread_line = 1325,
    .parameters = 3,
};

void add(ITransaction& tx, std::string& response, const char* const* parameters)
{
    const char* username = parameters[0];

    // An earlier cloud account of that name gives way; whether one did, the addition shows.
    DelUser(username, username, CLOUD_ACCOUNTS_ONLY);

    AccountName name;
    const int result = AddUser(accountName(name, username), parameters[1], parameters[2], "User");
    if (result == SUCCESS) {
        tx.setCode(CODE_SUCCEED);
        setResponse(response, "success");
        LOG_IN(
            HANDLER.function, 1311, Debug, "[syscmd:AddAccountHandler] :AddUser %s success\n",
            username
        );
        return;
    }
    LOG_IN(
        HANDLER.function, 1316, Error,
        "ERROR [syscmd:AddAccountHandler] :AddUser %s failed with code=%d\n", username, result
    );
    setResponse(response, "AddUser failed");
    tx.setCode(CODE_FAILED);
}

} // namespace

void AddAccountHandler(ITransaction* pTx, std::string& response)
{
    runCommand(pTx, response, HANDLER, add);
}
