/** Release of the device from its cloud owner at the daemon. */
#pragma once

/** Clears the daemon's cloud owner; 0 when the daemon carried it out, else -1 (logged). */
int Unregister();
