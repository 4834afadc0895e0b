/** Texts of errno values. */
#pragma once

/** A buffer for the text of an errno value. */
using ErrorText = char[128];

/** Fills `buffer` with the text of the errno value `error` (strerror_r(3)); returns the buffer. */
const char* errorText(ErrorText& buffer, int error);
