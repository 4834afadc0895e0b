#include "devkit/bwdrecord/kept_file.h"

#include "devkit/bwdrecord/append.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace {

bool lent = false;
int kept = -1;
dev_t device = 0;
ino_t inode = 0;

/** What the kept descriptor leads to. */
enum class State {
    Ours,
    Removed,
    Gone,   /**< closed, or another's now */
    Unknown /**< cannot be told at present */
};

State look(bool* empty)
{
    struct stat status = {};
    if (kept < 0) {
        return State::Gone;
    }
    if (fstat(kept, &status) != 0) {
        return errno == EBADF ? State::Gone : State::Unknown;
    }
    if (status.st_dev != device || status.st_ino != inode) {
        return State::Gone;
    }
    *empty = status.st_size == 0;
    return status.st_nlink > 0 ? State::Ours : State::Removed;
}

void open_anew(const char* path, bool* empty)
{
    struct stat status = {};
    kept = open_recording(path, empty);
    if (kept >= 0 && fstat(kept, &status) != 0) {
        close(kept);
        kept = -1;
    }
    device = status.st_dev;
    inode = status.st_ino;
}

} // namespace

Loan borrow_file(const char* path)
{
    Loan loan;
    if (__atomic_test_and_set(&lent, __ATOMIC_ACQUIRE)) {
        loan.fd = open_recording(path, &loan.empty);
        return loan;
    }
    loan.kept = true;
    const State state = look(&loan.empty);
    if (state == State::Removed) {
        close(kept);
    }
    if (state == State::Removed || state == State::Gone) {
        open_anew(path, &loan.empty);
    }
    loan.fd = state == State::Unknown ? -1 : kept;
    return loan;
}

void give_back(const Loan& loan)
{
    if (loan.kept) {
        __atomic_clear(&lent, __ATOMIC_RELEASE);
    } else if (loan.fd >= 0) {
        close(loan.fd);
    }
}

void forget_file()
{
    bool empty = false;
    if (look(&empty) != State::Gone) {
        close(kept);
    }
    kept = -1;
}
