/** A plug-in that answers as it is told: operation "answer", parameters CODE and RESPONSE. */
#include "liblst/export.h"
#include "syscmd/handler.h"

#include <string>

extern "C" EXPORTED void execute(ITransaction* transaction)
{
    std::string text;
    if (transaction->getRequestParam(1, text))
        transaction->setCode(static_cast<TTransactionCode>(std::stoi(text)));
    if (transaction->getRequestParam(2, text))
        transaction->addResponseParam(text);
    if (transaction->getAuthInfo(text))
        transaction->addResponseParam(text);
}
