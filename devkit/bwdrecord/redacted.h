/** A transaction's text as a recording tells it. */
#pragma once

#include "devkit/bwdrecord/pieces.h"
#include "devkit/bwdrecord/text.h"

#include <cstddef>

/**
 * Adds a transaction's text as a JSON string's content, with stand-ins for secrets, and with
 * pseudonyms where they are wanted.
 *
 * @param request  the request to it, whose names are replaced in the daemon's reasons, too
 */
void add_redacted(Text* out, const char* text, std::size_t length, const Piece& request);
