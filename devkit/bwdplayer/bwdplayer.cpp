#include "devkit/bwdplayer/bwdplayer.h"

#include "common/mxl/bwdclient.h"

#include <cerrno>

BwdAnswer* bwdplayer_answer = nullptr;

extern "C" EXPORTED int
process_request_bwdclient(char* request, int request_length, char** reply, int* reply_length)
{
    if (bwdplayer_answer == nullptr) {
        errno = ENOSYS;
        return -1;
    }
    return bwdplayer_answer(request, request_length, reply, reply_length);
}
