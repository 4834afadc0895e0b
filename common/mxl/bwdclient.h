/**
 * The management daemon's client library, libbwdclient: the one call that this plug-in imports.
 * The device implements it; on a desk devkit/bwdclient does.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Hands one transaction to the management daemon and waits for its reply.
 *
 * @param request         the request text; read only, although the type does not say so
 * @param request_length  bytes of the request, without the terminating NUL
 * @param reply           receives a newly allocated NUL-terminated reply, which the caller releases
 *                        with free(); undefined after a failure
 * @param reply_length    receives the bytes of the reply, without the terminating NUL
 * @return 0 when the exchange took place (the reply may still be null), anything else on failure
 */
int process_request_bwdclient(char* request, int request_length, char** reply, int* reply_length);

#ifdef __cplusplus
}
#endif
