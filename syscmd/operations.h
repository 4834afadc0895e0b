/** The table of operations: what each is called, who may ask for it, and what carries it out. */
#pragma once

#include "common/transaction.h"
#include "syscmd/strict.h"

#include <string>

/** Who may ask for an operation. */
enum class Requester {
    Anyone,        /**< no check, not even of credentials */
    OwnerOrMember, /**< the cloud owner, or an unlocked member of the cloud group */
    Owner,         /**< the cloud owner alone */
};

struct Operation {
    const char* name;
    Requester requester;
    void (*handle)(ITransaction* pTx, std::string& response);
    [[no_unique_address]] Parameters parameters; /**< of a strict build alone */
};

/** The operation called `name` exactly; null when there is none. */
const Operation* findOperation(const std::string& name);

/** Whether a requester with these flags (see AuthenticateUser) may run the operation. */
bool mayRun(const Operation& operation, int is_owner, int is_sh);
