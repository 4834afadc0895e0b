/** A request's text taken apart, down to the one operation that it holds. */
#pragma once

#include "devkit/boxwelld/xml.h"

#include <string>

// Texts that stand in every request.
constexpr char RESOURCES[] = "urn:varden:nas:boxwelld";
/** The end of the transaction schema's address; its host is anybody's. */
constexpr char SCHEMA_PATH[] = "/protocol/transaction/MXLSchema-0.9";

/** What a reply repeats of its request. */
struct Envelope {
    std::string schema;
    std::string source;
    std::string transaction_id;
    std::string operation_id;
};

struct Request {
    Document document; // owns the operation
    const xmlNode* operation = nullptr;
};

/**
 * Reads a request, with or without an `Authorization: NAME` line ahead of it.
 *
 * @param envelope  filled in as far as reading came, also where the request is refused
 * @throw Refusal   the text is not well-formed, or is no transaction of one operation
 */
Request read_request(const std::string& text, Envelope& envelope);
