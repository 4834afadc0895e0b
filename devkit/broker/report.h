/** An answer, in words for people or as JSON. */
#pragma once

#include "devkit/broker/plugin.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

/** The result code by its name; "code N" for a number without one. */
std::string code_name(TTransactionCode code);

/** The response text, its parameters a line each; nothing: there was none. */
std::optional<std::string> response_of(const Answer& answer);

/** Whether the broker counts the command as carried out. */
bool carried_out(const Answer& answer);

/** One line: the code, the response text, the time taken. */
std::string for_people(const Answer& answer);

/**
 * {"operation", "parameters": [...], "as": login or null, "code", "response": text or null,
 * "milliseconds"}; bytes that are no UTF-8 are replaced when it is printed.
 */
nlohmann::ordered_json as_json(const Command& command, const Answer& answer);

/** The JSON's text, indented, with a line end. */
std::string text_of(const nlohmann::ordered_json& json);
