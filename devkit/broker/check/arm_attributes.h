/** What an ARM object says in its section .ARM.attributes. */
#pragma once

#include <string_view>

/**
 * Whether floating-point arguments are passed in the registers of the floating-point unit
 * (Tag_ABI_VFP_args), as by the hard float ABI.
 *
 * @param section  the content of .ARM.attributes; one that is damaged says nothing
 */
bool says_hard_float(std::string_view section);
