#include "syscmd/add_account.h"

#include "liblst/owned.h"
#include "syscmd/handler.h"
#include "syscmd/mxl_exchange.h"
#include "syscmd/mxl_texts.h"
#include "syscmd/parameters.h"
#include "syscmd/password_pair.h"
#include "syscmd/user_delete.h"

#include <cstring>

namespace {

constexpr ExchangeWords WORDS = {
    .file = __FILE_NAME__,
    .function = "AddUser",
    .unformatted = {533, "ERROR [syscmd:AddUser]: asprintf failed\n"},
    .unsent = {527, "ERROR [syscmd:AddUser]: process_request_bwdclient failed\n"},
    .unanswered = {522, "ERROR [syscmd:AddUser]: respond is NULL\n"},
    .unread = {516, "ERROR [syscmd:AddUser]: GetMXLStatus failed\n"},
    .undetailed = {509, "ERROR [syscmd:AddUser]: GetMXLErrorDetail failed\n"},
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
    if (formatRequest(
            &request, WORDS, ADD_USER_TEXT, resource_type, username, hashes.smb, hashes.system,
            SKYHOLD_GROUP, email
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

void AddAccountHandler(ITransaction* pTx, std::string& response)
{
    if (pTx == nullptr) {
        LOG_AT(1295, Error, "[syscmd:AddAccountHandler] invalid input arguments");
        return;
    }
    std::string username;
    std::string password_hash;
    std::string email;
    if (!readParameters(*pTx, username, password_hash, email)) {
        response = "Add User: error reading username/password/email params from request";
        LOG_AT(
            1325, Error,
            "ERROR [syscmd:AddAccountHandler]: AddUser error reading username/password/email "
            "params from request\n"
        );
        pTx->setCode(CODE_FAILED);
        return;
    }

    // An earlier cloud account of that name gives way; whether one did, the addition shows.
    DelUser(username.c_str(), username.c_str(), CLOUD_ACCOUNTS_ONLY);

    const int result =
        AddUser(accountName(username).c_str(), password_hash.c_str(), email.c_str(), "User");
    if (result == SUCCESS) {
        pTx->setCode(CODE_SUCCEED);
        response = "success";
        LOG_AT(1311, Debug, "[syscmd:AddAccountHandler] :AddUser %s success\n", username.c_str());
        return;
    }
    LOG_AT(
        1316, Error, "ERROR [syscmd:AddAccountHandler] :AddUser %s failed with code=%d\n",
        username.c_str(), result
    );
    response = "AddUser failed";
    pTx->setCode(CODE_FAILED);
}
