/** Reading the names in the text of an owner file. */
#pragma once

#include <string_view>

/** The cloud owner's name in the text of an owner file, a view; empty when it names none. */
std::string_view ownerIn(const char* file);

/** The peer-to-peer owner's name, likewise. */
std::string_view p2pOwnerIn(const char* file);
