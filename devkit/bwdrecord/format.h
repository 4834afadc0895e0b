/** What writers and readers of recordings agree on; docs/formats-recording.md tells the rest. */
#pragma once

constexpr char RECORDING_FORMAT[] = "syscmd-recording";
/** Grows where an older reader would read the file wrongly. */
constexpr int RECORDING_VERSION = 1;

/** What a header says of names: as they were, or pseudonyms by a key. */
constexpr char NAMES_PLAIN[] = "plain";
constexpr char NAMES_KEYED[] = "keyed";
