/** What a plug-in must be, a row a rule; of the file alone, without loading it. */
#pragma once

#include "devkit/broker/check/elf_file.h"
#include "devkit/broker/check/profile.h"
#include "devkit/broker/check/row.h"

/** Whether the file is for the profile's machine. */
Row machine_row(const ElfFile& file, const Profile& profile);

/** All other rows, in the order in which they are shown. */
std::vector<Row> rows_of(const ElfFile& file, const Profile& profile);
