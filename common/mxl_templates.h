/**
 * The request templates, exported for other plug-ins: printf formats whose `%s` are named in order.
 * Nothing is escaped; what may hold markup stands in CDATA sections.
 */
#pragma once

#include "liblst/export.h"

/** Sets hashes, group, e-mail and cloud user, and unlocks. Owner, user id (3), user name, SMB hash,
 * system hash, group, e-mail, cloud user. */
EXPORTED extern const char* const UPDATE_ACCOUNT_MXL;

/** The same without unlocking. Owner, user id (3), user name, SMB hash, system hash, group, e-mail,
 * cloud user. */
EXPORTED extern const char* const RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME;

/** Owner, user id (3), user name, group, e-mail, cloud user. */
EXPORTED extern const char* const RENAME_ACCOUNT_MXL_WITH_P2P_USERNAME_NO_PASSWORD;

/** Owner, user id (3), user name, e-mail. */
EXPORTED extern const char* const RENAME_ACCOUNT_NO_PASSWORD_MXL;

/** Query by exact name: three conversions that together make the name. */
EXPORTED extern const char* const GET_USER_DATA_MXL;

/** Creates a locked account. Resource type, user name, SMB hash, system hash, group, e-mail. */
EXPORTED extern const char* const ADD_USER_MXL;

/** Deletes a remote-access user. User name. */
EXPORTED extern const char* const MXL_TMPL_DEL_NET;

/** Adds a remote-access user. Full name, user name. */
EXPORTED extern const char* const MXL_TMPL_ADD_NET;

/** The same with an invitation by e-mail; no operation of this plug-in sends it. Full name, user
 * name. */
EXPORTED extern const char* const MXL_TMPL_ADD_NET_INVITE;

/** Query by e-mail address; no operation of this plug-in sends it. E-mail address. */
EXPORTED extern const char* const QUERY_USER_BY_ID_MXL;

/** Deletes an account and keeps its home folder. User id. */
EXPORTED extern const char* const DELETE_USER_MXL;

/** Clears the device's cloud owner. No conversions. */
EXPORTED extern const char* const UNREGISTER_USER_MXL;
