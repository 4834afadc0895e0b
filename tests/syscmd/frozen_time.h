#pragma once

#include <ctime>

/** What time(2) tells in this program; 0: the time. */
extern time_t frozen_time;
