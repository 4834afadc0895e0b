/** What a strict build owes beyond the contract. */
#pragma once

#include "tools/fuzz/device.h"

/** A case whose trusted texts (owner file, the daemon's records, what tools print) hold no markup:
 * what changes a structure then is a parameter. */
Case trustworthy(Case test);

/** Of a command that is to be carried out, what the statement of its refusal says; nothing where it
 * is carried out. */
std::string refusal(const Case& test, bool is_owner);
/** Whether a login may be an account's, so that the daemon is asked about it. */
bool isLegalLogin(const std::string& login);

// Each ends the process where it does not hold.

/** Every request is one of the templates, every shell command one of the fixed ones, with values in
 * place of the conversions and in nothing else; an owner file that was written whole is one, too.
 */
void expectStructure(const Outcome& outcome, const Files& before);
/** Whoever is not the owner has acted on no account but their own. */
void expectOwnAccount(const Case& test, const Outcome& outcome);
/** Watches what the next command writes, and its journal, from which Outcome::refusal is taken. */
void watchStrictly();
