// The call of the client library, recorded. Preloaded, it stands in front of the real one, which
// this library needs, so that the loader has found it before the first call.
#include "devkit/bwdrecord/bwdrecord.h"

#include "common/mxl/bwdclient.h"
#include "devkit/bwdrecord/append.h"
#include "devkit/bwdrecord/kept_file.h"
#include "devkit/bwdrecord/line.h"
#include "devkit/bwdrecord/pseudonym.h"
#include "liblst/export.h"

#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

using Process = int(char*, int, char**, int*);

Process* real = nullptr;
/** For what a line holds beside its texts, and for their escapes. */
constexpr std::size_t ROOM_BESIDE_TEXTS = 1024;

char path[PATH_MAX]; // empty: nothing is recorded
unsigned long calls = 0;
pid_t pid = 0; // of this process: asking for it takes as long as a tenth of a line

std::int64_t now_us(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return std::int64_t{now.tv_sec} * 1000000 + now.tv_nsec / 1000;
}

void learn_pid()
{
    pid = getpid();
}

/** The environment as it is when the library is loaded. */
[[gnu::constructor]] void begin()
{
    learn_pid();
    pthread_atfork(nullptr, nullptr, learn_pid);
    record_to(std::getenv("BWDRECORD_FILE"), std::getenv("BWDRECORD_KEY"));
}

void write_lines(int fd, bool empty, const Call& call)
{
    Text text;
    const std::size_t texts = call.request_length + call.reply_length;
    text_reserve(&text, texts < LONGEST_RECORDED ? texts + ROOM_BESIDE_TEXTS : 1);
    if (empty) {
        add_header(&text); // in the same write as the first line
    }
    add_call(&text, call);
    if (text.whole) {
        append_whole(fd, text.bytes, text.length);
    }
    text_free(&text);
}

void record(Call& call)
{
    call.pid = pid;
    call.number = __atomic_add_fetch(&calls, 1, __ATOMIC_RELAXED);
    const Loan loan = borrow_file(path);
    if (loan.fd >= 0) {
        write_lines(loan.fd, loan.empty, call);
    }
    give_back(loan);
}

/** Only where the call says so is there a reply, or a reason. */
Call call_of(int result, int error, const char* request, int request_length)
{
    Call call;
    call.result = result;
    call.error = result != 0 ? error : 0;
    call.request = request_length < 0 ? nullptr : request;
    call.request_length = call.request == nullptr ? 0 : static_cast<std::size_t>(request_length);
    return call;
}

/** Records a call from end to end; what the caller sees, errno too, is the real one's. */
int recorded(char* request, int request_length, char** reply, int* reply_length)
{
    const std::int64_t began = now_us(CLOCK_REALTIME);
    const std::int64_t start = now_us(CLOCK_MONOTONIC);
    const int result = real(request, request_length, reply, reply_length);
    const int error = errno;
    Call call = call_of(result, error, request, request_length);
    call.took_us = now_us(CLOCK_MONOTONIC) - start;
    call.began_us = began;
    if (result == 0 && reply != nullptr && *reply != nullptr && reply_length != nullptr &&
        *reply_length >= 0) {
        call.reply = *reply;
        call.reply_length = static_cast<std::size_t>(*reply_length);
    }
    int cancelling = 0;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelling);
    record(call);
    pthread_setcancelstate(cancelling, &cancelling);
    errno = error;
    return result;
}

} // namespace

void record_to(const char* file, const char* key)
{
    real = reinterpret_cast<Process*>(dlsym(RTLD_NEXT, "process_request_bwdclient"));
    forget_file();
    path[0] = '\0';
    const std::size_t size = file == nullptr ? 0 : std::strlen(file) + 1;
    if (size > 0 && size <= sizeof path) {
        std::memcpy(path, file, size);
        pseudonym_key(key);
    }
}

extern "C" EXPORTED int
process_request_bwdclient(char* request, int request_length, char** reply, int* reply_length)
{
    if (real == nullptr) {
        errno = ENOSYS;
        return -1;
    }
    return path[0] == '\0' ? real(request, request_length, reply, reply_length)
                           : recorded(request, request_length, reply, reply_length);
}
