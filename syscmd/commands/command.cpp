#include "syscmd/commands/command.h"

#include "common/io.h"

#include <cstring>

namespace {

void failUnread(ITransaction& tx, std::string& response, const CommandWords& words)
{
    if (words.code_first) {
        tx.setCode(CODE_FAILED);
    }
    setResponse(response, words.answer);
    logStatement(
        LogLevel::Error, words.file, words.unread_line, words.function,
        "ERROR [syscmd:%s]: %serror reading username/password/email params from request\n",
        words.function, words.unread
    );
    if (!words.code_first) {
        tx.setCode(CODE_FAILED);
    }
}

} // namespace

void runCommand(
    ITransaction* pTx, std::string& response, const CommandWords& words, CommandWork work
)
{
    if (pTx == nullptr) {
        logStatement(
            LogLevel::Error, words.file, words.null_line, words.function,
            "[syscmd:%s] invalid input arguments", words.function
        );
        return;
    }
    std::string values[MAX_PARAMETERS];
    const char* parameters[MAX_PARAMETERS] = {};
    for (int i = 0; i < words.parameters; ++i) {
        if (!pTx->getRequestParam(i + 1, values[i])) {
            failUnread(*pTx, response, words);
            return;
        }
        parameters[i] = values[i].c_str();
    }
    work(*pTx, response, parameters);
}

const char* accountName(AccountName& cut, const char* name)
{
    const std::size_t length = strnlen(name, MAX_USERNAME_LENGTH);
    memcpy(cut, name, length);
    cut[length] = '\0';
    return cut;
}
