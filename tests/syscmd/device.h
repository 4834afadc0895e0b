/** The private device that the tests run on: its state set and looked at, the plug-in driven. */
#pragma once

#include "tests/syscmd/recording_transaction.h"

#include <string>
#include <vector>

/** One log statement, as the journal or the file has it. */
struct Statement {
    std::string level; // "ERROR"; the priority, "3", in the journal
    std::string file;
    int line = 0;
    std::string function; // the journal's only
    std::string text;
};

/** The built plug-in, loaded as the broker does. */
void (*pluginEntry())(ITransaction*);

/** Runs a shell command; its output, and a test failure when it ends with another status. */
std::string shell(const std::string& command, int expected_status = 0);

/** Back to the default accounts and owner, an empty log file, no orders, sessions or events. */
void resetDevice();

/** Base64 of a text. */
std::string base64(const std::string& text);

/** Runs one command; effects on the transaction go into the log file, in order with the statements.
 */
void command(RecordingTransaction& transaction);

/** The log file as a list: statements, and effects as statements of level "=". */
std::vector<Statement> fileStatements();

/** The statements that reached the journal since the last call. */
std::vector<Statement> journalStatements();

/** The requests that the daemon received since resetDevice(). */
std::vector<std::string> requests();
