/** The private device that the tests run on: its state set and looked at, the plug-in driven. */
#pragma once

#include "tests/syscmd/recording_transaction.h"
#include "tests/syscmd/statements.h"

#include <string>
#include <vector>

/** The built plug-in, loaded as the broker does. */
void (*pluginEntry())(ITransaction*);

/** Whether it is the strict one, as this program's name tells. */
bool isStrict();

/** Runs a shell command; its output, and a test failure when it ends with another status. */
std::string shell(const std::string& command, int expected_status = 0);

/** Back to the default accounts and owner, an empty log file, no orders, sessions or events. */
void resetDevice();

/** Base64 of a text. */
std::string base64(const std::string& text);

/** Runs one command; effects on the transaction go into the log file, in order with the statements.
 */
void command(RecordingTransaction& transaction);

/** The log file as a list. */
std::vector<Statement> fileStatements();
void emptyLogFile();

/** The statements that reached the journal since the last call. */
std::vector<Statement> journalStatements();

/** What the daemon received and answered (nothing: ""), as its transcript has it. */
struct Answered {
    std::string request;
    std::string reply;
};
/** The exchanges since resetDevice(). */
std::vector<Answered> exchanges();
