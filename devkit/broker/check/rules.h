/** What a plug-in must be, a row a rule; of the file alone, without loading it. */
#pragma once

#include "devkit/broker/check/elf_file.h"
#include "devkit/broker/check/profile.h"
#include "devkit/broker/check/row.h"

/** Whether the file is for the profile's machine. */
Row machine_row(const ElfFile& file, const Profile& profile);

/** What the library must be for a broker to load it: a finding here, and it need not be tried. */
std::vector<Row> loading_rows(const ElfFile& file, const Profile& profile);

/** What it should be beyond that. */
std::vector<Row> quality_rows(const ElfFile& file, const Profile& profile);
