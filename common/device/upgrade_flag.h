/** The flag, by its existence, that this device's users were upgraded to single sign-on. */
#pragma once

#define SSO_UPGRADE_FLAG "/opt/skyhold/etc/.sso_upgraded"

/**
 * Creates, or empties, the single sign-on upgrade flag.
 *
 * @return 0, or -1 with errno of creat(2)
 */
int setSSOUpgradeFlag();
