/**
 * The state as JSON, the form that `show --json` prints and `seed` takes:
 *
 *   {"groups": [{"name": "sky-hold", "id": 2001}],
 *    "accounts": [{"name": "bob", "id": 1002, "group": "sky-hold", "locked": false,
 *                  "email": "bob@example.com", "smb_hash": "", "sys_hash": "",
 *                  "p2p_user_name": "", "member_of": ["share"]}],
 *    "remote_users": [{"name": "bob", "full_name": ""}],
 *    "cloud_owner": "alice"}
 *
 * Everything may be left out but names and an account's group; ids are then the next from 1001 for
 * accounts and from 2000 for groups.
 */
#pragma once

#include "devkit/boxwelld/store.h"

#include <string>

/** Replaces the state, orders and plan included, by the JSON text, whole or (an exception) not at
 * all. */
void seed(Store& store, const std::string& text);
