/** A recording as one page to look at, which needs nothing from outside and runs anywhere. */
#pragma once

#include "devkit/recording/recording.h"

#include <string>

/**
 * The page: HTML with its style, its script and the recording's data. Texts of the recording are
 * shown as they are, whatever they hold.
 *
 * @param name  what the recording is called on the page
 */
std::string page_of(const Recording& recording, const std::string& name);

/**
 * Writes the page as the file `path`, whole or not at all.
 *
 * @throws BadUse  when it cannot be written
 */
void write_page(const std::string& path, const std::string& page);
