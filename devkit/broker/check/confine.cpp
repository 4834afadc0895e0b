#include "devkit/broker/check/confine.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <iterator>

namespace {

constexpr rlim_t MOST_SECONDS = 10; // of processor time

#ifdef __arm__
constexpr unsigned ARCHITECTURE = AUDIT_ARCH_ARM;
#else
constexpr unsigned ARCHITECTURE = AUDIT_ARCH_X86_64;
#endif

constexpr unsigned REFUSED[] = {
    SYS_socket,   SYS_connect,  SYS_openat2,   SYS_creat,     SYS_unlink,    SYS_unlinkat,
    SYS_rename,   SYS_renameat, SYS_renameat2, SYS_mkdir,     SYS_mkdirat,   SYS_rmdir,
    SYS_link,     SYS_linkat,   SYS_symlink,   SYS_symlinkat, SYS_chmod,     SYS_fchmod,
    SYS_fchmodat, SYS_chown,    SYS_fchown,    SYS_lchown,    SYS_fchownat,  SYS_mknod,
    SYS_mknodat,  SYS_truncate, SYS_utimensat, SYS_setxattr,  SYS_lsetxattr, SYS_fsetxattr,
    SYS_mount,    SYS_umount2,  SYS_kill,      SYS_ptrace,    SYS_reboot,
};
constexpr unsigned WRITING = O_WRONLY | O_RDWR | O_CREAT | O_TRUNC;
constexpr unsigned REFUSE = SECCOMP_RET_ERRNO | EACCES;

constexpr sock_filter load(std::size_t offset)
{
    return BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<unsigned>(offset));
}

constexpr sock_filter unless_equal(unsigned value, unsigned char skip)
{
    return BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, 0, skip);
}

constexpr sock_filter end(unsigned action)
{
    return BPF_STMT(BPF_RET | BPF_K, action);
}

/** A program for the kernel: call by call, what is refused. */
struct Filter {
    sock_filter steps[2 * std::size(REFUSED) + 32];
    unsigned short length = 0;

    void add(sock_filter step) { steps[length++] = step; }

    /** Refuses the call when its argument, the flags of an open, says that something is written. */
    void refuse_writing(unsigned call, unsigned argument)
    {
        add(unless_equal(call, 4));
        add(load(offsetof(seccomp_data, args) + argument * sizeof(seccomp_data::args[0])));
        add(BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, WRITING, 0, 1));
        add(end(REFUSE));
        add(end(SECCOMP_RET_ALLOW));
    }
};

Filter make_filter()
{
    Filter filter = {};
    filter.add(load(offsetof(seccomp_data, arch)));
    filter.add(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, ARCHITECTURE, 1, 0));
    filter.add(end(SECCOMP_RET_KILL_PROCESS));
    filter.add(load(offsetof(seccomp_data, nr)));
    for (const unsigned call : REFUSED) {
        filter.add(unless_equal(call, 1));
        filter.add(end(REFUSE));
    }
    filter.refuse_writing(SYS_open, 1);
    filter.refuse_writing(SYS_openat, 2);
    filter.add(end(SECCOMP_RET_ALLOW));
    return filter;
}

bool limit(__rlimit_resource resource, rlim_t value)
{
    const rlimit both = {value, value};
    return setrlimit(resource, &both) == 0;
}

} // namespace

bool confine_this_process()
{
    Filter filter = make_filter();
    const sock_fprog program = {filter.length, filter.steps};
    // A write to a file that is open all the same: an error, no signal.
    return signal(SIGXFSZ, SIG_IGN) != SIG_ERR && limit(RLIMIT_FSIZE, 0) && limit(RLIMIT_CORE, 0) &&
           limit(RLIMIT_CPU, MOST_SECONDS) && prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}
