/** Whether a file is a plug-in that a device's broker can load. */
#pragma once

#include "devkit/broker/check/row.h"

/**
 * Reads the library and, where nothing speaks against loading it, tries it.
 *
 * @param profile  whose broker is to load it; empty: by the file's machine
 * @throws BadUse  when the file cannot be read or there is no such profile
 */
Report check_library(const std::string& library, const std::string& profile);
