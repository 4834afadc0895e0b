#include "common/bwdclient.h"

#include "liblst/export.h"

extern "C" EXPORTED int process_request_bwdclient(char*, int, char**, int*)
{
    return -1;
}
