#pragma once

#include <ctime>

/** What time(2) tells in this program, the plug-in included. */
extern time_t plugin_time;
