/** Reading replies, by cutting: they are never parsed as XML. */
#pragma once

/**
 * Reads the outcome of a transaction: the reply's status, "success" when it was carried out.
 *
 * The `status` attribute must be the last of the `xs:response` start tag; a reply without one gives
 * an empty text.
 *
 * @return 0, or -1 when memory runs out or an argument is null (logged)
 */
int GetMXLStatus(char** status, const char* respond);

/**
 * Reads why the daemon refused a transaction; a reply that does not say gives an empty text.
 *
 * @return 0, or -1 when memory runs out or an argument is null (logged)
 */
int GetMXLErrorDetail(char** error_detail, const char* respond);

/**
 * Copies the text behind the first `begin`, up to the next `end` or else to the end of `string`;
 * an empty text when there is no `begin`.
 *
 * @return 0, or -1 when memory runs out or an argument is null
 */
int CutStr(char** result, const char* string, const char* begin, const char* end);
