/** What a recording does not tell, as far as its transactions let it be concluded. */
#pragma once

#include "devkit/recording/recording.h"

#include <string>

/**
 * The device's state before the first call: accounts as the first reply has them that tells of
 * each, unless they were added meanwhile; the owner by whose name an account was updated, or else
 * one called owner.
 */
Facts concluded_state(const Recording& recording);

/**
 * The recording with commands in place of bare calls: adduser, deleteuser, addremoteuser and
 * unregister follow from their requests. They come from the owner of the state.
 *
 * @param name  what the file is called in a complaint
 * @throws BadRecording  naming the first request from which no command follows
 */
Recording with_commands(const Recording& recording, const Facts& state, const std::string& name);
