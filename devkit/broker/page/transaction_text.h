/** Transactions as people read them. The texts may be cut or malformed: nothing of them is left
 * out. */
#pragma once

#include <string>
#include <vector>

/** An element a line, indented by its depth; blanks between elements are left out. */
std::vector<std::string> laid_out(const std::string& transaction);

/** What a request asks for: "query User_Collection", whatever its values; empty when it is none. */
std::string kind_of(const std::string& request);

/** The name, address or id that a request is about; empty when there is none. */
std::string subject_of(const std::string& request);

/** Both: "query User_Collection zoe". */
std::string summary_of(const std::string& request);

/** What a reply says: its status, and its reason where it has one; "no status" when it has none. */
std::string outcome_of(const std::string& reply);
