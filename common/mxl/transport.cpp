#include "common/mxl/transport.h"

#include "common/log.h"
#include "common/mxl/bwdclient.h"
#include "common/result.h"

#include <climits>
#include <cstring>

Delivery deliver(char** reply, const char* request)
{
    const std::size_t length = strlen(request);
    if (length > INT_MAX) {
        return Delivery::Failed; // GCOV_EXCL_LINE: two gigabytes
    }

    int reply_length = 0;
    // The library takes the request as char* but only reads it.
    if (process_request_bwdclient(
            const_cast<char*>(request), static_cast<int>(length), reply, &reply_length
        ) != SUCCESS) {
        return Delivery::Failed;
    }
    return *reply == nullptr ? Delivery::Unanswered : Delivery::Answered;
}

int SendMXLtoBWD(char** respond, const char* request)
{
    if (request == nullptr || respond == nullptr) {
        LOG(Error, "ERROR [syscmd:%s] invalid input arguments\n", __func__);
        return -1;
    }
    return deliver(respond, request) == Delivery::Answered ? SUCCESS : -1;
}
