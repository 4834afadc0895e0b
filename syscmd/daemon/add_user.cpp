#include "syscmd/daemon/add_user.h"

#include "common/isowner.h"
#include "common/mxl_templates.h"
#include "common/result.h"
#include "liblst/liblst.h"
#include "liblst/owned.h"
#include "syscmd/daemon/exchange.h"
#include "syscmd/daemon/password_pair.h"

namespace {

constexpr Exchange ADDITION = {
    .speaker = SPEAKER("AddUser"),
    .unformatted = {533, ": asprintf failed\n"},
    .unsent = {527, ": process_request_bwdclient failed\n"},
    .unanswered = {522, ": respond is NULL\n"},
    .unread = {516, ": GetMXLStatus failed\n"},
    .undetailed = {509, ": GetMXLErrorDetail failed\n"},
};

/** Hashes of no password: the ninth character of the SMB hash is no hexadecimal digit. */
constexpr PasswordPair PLACEHOLDER = {
    "7C41D09AQ3B8E2F65A0D9C14E7B3F820", "$1$Qa7Lm2Xp$Zr4.hT9wYc1KbN3sVe8Fo0"};

} // namespace

int AddUser(
    const char* username, const char* password_hash, const char* email, const char* resource_type
)
{
    if (username == nullptr || email == nullptr) {
        LOG_INVALID_INPUT(435);
        return -1;
    }
    AUTO_FREE char* decoded = nullptr;
    PasswordPair hashes = PLACEHOLDER;
    if (password_hash != nullptr &&
        decodePasswordPair(&decoded, &hashes, password_hash) != SUCCESS) {
        LOG_AT(
            455, Error, "ERROR [syscmd:%s] invalid hash value %s[%s]\n", __func__,
            decoded == nullptr ? "" : decoded, password_hash
        );
        return -1;
    }
    LOG_AT(
        474, Info, "[syscmd::%s] username=%s, syshash=%s, smbhash=%s, email=%s", __func__, username,
        hashes.system, hashes.smb, email
    );

    char* request = String(
        ADD_USER_MXL_TEXT, resource_type, username, hashes.smb, hashes.system, SKYHOLD_GROUP, email
    );
    AUTO_ANSWER Answer answer = {};
    switch (ask(answer, ADDITION, request)) {
    case Outcome::Done:
        return SUCCESS;
    case Outcome::Failed:
        return -1;
    case Outcome::Refused:
        break;
    }
    if (strstr(answer.detail, "already exists") != nullptr) {
        LOG_AT(498, Error, "ERROR [syscmd:%s]: user already exists\n", __func__);
    } else {
        LOG_AT(502, Error, "ERROR [syscmd:%s]: AddUser failed\n", __func__);
    }
    LOG_AT(504, Error, "ERROR [syscmd:%s]: MXL error %s", __func__, answer.detail);
    return -1;
}
