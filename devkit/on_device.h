/** Whether a program of the devkit runs on a private device, or on the machine of whoever calls it.
 */
#pragma once

#include <unistd.h>

#include <string>

/** The launcher makes it in the device's own /run. */
constexpr char DEVICE_MARKER[] = "/run/.device";

inline bool on_device()
{
    return access(DEVICE_MARKER, F_OK) == 0;
}

/** What to do about not being on a device, as one sentence; `option` is what would help here. */
inline std::string no_device(const std::string& option)
{
    return "this is no device: devkit/device/device starts one, ./dev demo shows one at work; "
           "elsewhere " +
           option + " must be given";
}
