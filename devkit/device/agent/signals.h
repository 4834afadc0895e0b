/** Signals as a descriptor. */
#pragma once

#include "devkit/boxwelld/files.h"

#include <initializer_list>

/** Blocks the signals; the descriptor becomes readable when one of them has come. */
Fd block_signals(std::initializer_list<int> signals);

/** The signal that has come, 0 for none; the descriptor does not wait. */
int next_signal(const Fd& signals);

/** Every signal as a new process has it: none blocked, none ignored. For a child before it
 * executes. */
void default_signals();
