#include "common/io.h"
#include "syscmd/commands/command.h"
#include "syscmd/handler.h"
#include "syscmd/sessions/record.h"

#include <cstring>

namespace {

constexpr CommandWords HANDLER = {
    .file = __FILE_NAME__,
    .function = "InitLocalSessionHandler",
    .unread = "",
    .answer = "InitLocalSession: error reading username/token/sessionid/seed params from request",
    .null_line = __LINE__,
    .unread_line = __LINE__,
    .parameters = 3,
};

void record(ITransaction& tx, std::string& response, const char* const* parameters)
{
    AccountName name;
    const char* username = accountName(name, parameters[0]);
    const char* token = parameters[1];
    const char* expires = parameters[2];
    LOG_IN(
        HANDLER.function, __LINE__, Info, "[syscmd:InitLocalSessionHandler]: InitLocalSession %s",
        username
    );

    CleanupObsoleteLocalSessions(strcmp(expires, "0") == 0 ? username : nullptr);
    UpdateLocalSessionRecords(token, username, expires);

    tx.setCode(CODE_SUCCEED);
    setResponse(response, "success");
    LOG_IN(
        HANDLER.function, __LINE__, Debug,
        "[syscmd:InitLocalSessionHandler]: InitLocalSession %s success", username
    );
}

} // namespace

void InitLocalSessionHandler(ITransaction* pTx, std::string& response)
{
    runCommand(pTx, response, HANDLER, record);
}
