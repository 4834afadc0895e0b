/**
 * The whole public surface of the plug-in: its entry point, the operations' handlers, the check of
 * the requester, and the operations' names.
 *
 * Conventions:
 *  - The plug-in exports all of it.
 *  - The broker owns the transaction; it is never kept beyond a call.
 *  - `execute` is the only function that the broker calls, once a command, on one thread at a time.
 *    No exception leaves it.
 *  - A handler sets the transaction's code itself and leaves its text in `response`; it adds no
 *    response parameter. Parameters are numbered from 1; 0 is the operation's name. Given a null
 *    transaction a handler logs it and touches nothing.
 */
#pragma once

#include "common/isowner.h"
#include "common/transaction.h"
#include "liblst/export.h"

#include <string>

/** The operations' names, as request parameter 0 spells them. */
EXPORTED extern const char* const OPERATION_ADDACCOUNT;
EXPORTED extern const char* const OPERATION_DELETEACCOUNT;
EXPORTED extern const char* const OPERATION_UPDATE_USER;
EXPORTED extern const char* const OPERATION_UPGRADE_USER_TO_SSO;
EXPORTED extern const char* const OPERATION_ADDREMOTEUSER;
EXPORTED extern const char* const OPERATION_UREGISTER;
EXPORTED extern const char* const OPERATION_INITLOCALSESSION;

/**
 * Carries out one command: checks the requester, runs the operation's handler, and adds exactly one
 * response parameter. Code and response are then the transaction's.
 *
 * @param pTx  the command; null is ignored
 */
extern "C" EXPORTED void execute(ITransaction* pTx);

/**
 * Decides whether the requester, named by the transaction's credentials, may ask for an operation.
 * An operation that anyone may ask for, and an unknown one, passes unchecked, the flags untouched.
 *
 * @param operation  the operation's name
 * @param pTx        the command
 * @param is_owner   set to 1 for the device's cloud owner, else to 0
 * @param is_sh      set to 1 for the owner and for an unlocked member of SKYHOLD_GROUP, else to 0
 * @return 0 allowed, -1 refused (logged), -2 for a null transaction (logged)
 */
EXPORTED int
AuthenticateUser(const std::string& operation, ITransaction* pTx, int& is_owner, int& is_sh);

/** "adduser": user name, Base64 hash pair, e-mail address. Creates a locked account in the cloud
 * group, in place of an earlier cloud account of that name. */
EXPORTED void AddAccountHandler(ITransaction* pTx, std::string& response);

/** "addremoteuser": user name. Registers a remote-access user; one already there is no failure. */
EXPORTED void AddRemoteUserHandler(ITransaction* pTx, std::string& response);

/** "deleteuser": user name, remote-access name. Deletes the account and its remote-access user. */
EXPORTED void DeleteAccountHandler(ITransaction* pTx, std::string& response);

/** "unregister": no parameters. Releases the device from its cloud owner; the code of success is
 * CODE_NOREPLY, and the response stays as it was. */
EXPORTED void UnregisterHandler(ITransaction* pTx, std::string& response);

/** "updateuser": user name, Base64 hash pair, e-mail address, peer-to-peer name. Renames the
 * account to its e-mail address, moving local accounts of that name out of the way. */
EXPORTED void UpdateUserHandler(ITransaction* pTx, std::string& response);

/** "upgradeusertosso": peer-to-peer name, e-mail address, Base64 hash pair or "". Binds the account
 * to single sign-on under the name of its e-mail address. */
EXPORTED void UpgradeUserToSSOHandler(ITransaction* pTx, std::string& response);

/** "initlocalsession": user name, token, expiry ("0" pins the session). Records a local session and
 * sweeps old records; only a missing parameter makes it fail. */
EXPORTED void InitLocalSessionHandler(ITransaction* pTx, std::string& response);
