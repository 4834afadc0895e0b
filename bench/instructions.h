/** Counting instructions by callgrind, in a run of this program under valgrind. */
#pragma once

#include <functional>
#include <vector>

/** In that run: does the work so that its instructions are dumped. */
void dumpInstructions(const std::function<void()>& work);

/** Starts that run; the instructions of each dump in order, none when it failed. */
std::vector<double> runCallgrind();
