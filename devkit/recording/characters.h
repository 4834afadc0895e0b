/**
 * Bytes of any kind as JSON can hold them: those that are no UTF-8 are characters of the private
 * area there, U+F700 plus the byte.
 */
#pragma once

#include <string>

/** The text as UTF-8 without any byte that is none. */
std::string as_characters(const std::string& bytes);

/** The bytes for which those characters stand. */
std::string as_bytes(const std::string& characters);
