#include "devkit/device/keeper/old_calls.h"

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>

bool refuse_newer_calls()
{
    // The program's words, from linux/filter.h; a jump counts the instructions it skips.
    constexpr unsigned short LOAD = BPF_LD | BPF_W | BPF_ABS;
    constexpr unsigned short IF_EQUAL = BPF_JMP | BPF_JEQ | BPF_K;
    constexpr unsigned short RETURN = BPF_RET | BPF_K;
    sock_filter program[] = {
        {LOAD, 0, 0, offsetof(seccomp_data, nr)},
        {IF_EQUAL, 4, 0, SYS_statx},
        {IF_EQUAL, 3, 0, SYS_faccessat2},
        {IF_EQUAL, 2, 0, SYS_openat2},
        {IF_EQUAL, 1, 0, SYS_execveat},
        {RETURN, 0, 0, SECCOMP_RET_ALLOW},
        {RETURN, 0, 0, SECCOMP_RET_ERRNO | ENOSYS},
    };
    const sock_fprog filter = {sizeof program / sizeof *program, program};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}
