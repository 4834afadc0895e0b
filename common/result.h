/** What routines return. */
#pragma once

/** The int that routines return on success; a failure is -1 unless a routine lists other values. */
constexpr int SUCCESS = 0;
