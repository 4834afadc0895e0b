/** The families of cases, each in a file of its name. */
#pragma once

#include "bench/frame.h"

void benchHashes(Frame& frame);
void benchLog(Frame& frame);
void benchUserQuery(Frame& frame);
void benchOperations(Frame& frame);
void benchSessions(Frame& frame);
void benchLists(Frame& frame);
void benchReplace(Frame& frame);
void benchCut(Frame& frame);
void benchEditing(Frame& frame);
void benchFiles(Frame& frame);
void benchLines(Frame& frame);
void benchConfig(Frame& frame);
void benchLoad(Frame& frame);

/** What `bench --instructions` does: each operation, then its floor, each in a dump of its own. */
void runUnderCallgrind();
