/** What a plug-in exports, against the list. */
#pragma once

#include "devkit/broker/check/elf_file.h"
#include "devkit/broker/check/row.h"

Row exports_row(const ElfFile& file);
