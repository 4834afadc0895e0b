/**
 * XML as the daemon reads it: a thin layer over libxml2. What is not well-formed or not as it is
 * expected is thrown as a Refusal that tells why.
 */
#pragma once

#include <libxml/tree.h>

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using Document = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

/** Parses within limits.h and without network; a document type, and so any entity, is refused. */
Document parse_xml(std::string_view text);

std::string name_of(const xmlNode* node);
std::string namespace_of(const xmlNode* node);

/** The child elements; there may be blanks and comments between them, but no text. */
std::vector<xmlNode*> children(const xmlNode* node);

/** The one child, which must have this namespace and name. */
const xmlNode* only_child(const xmlNode* node, const char* space, const char* name);

/** The children must have this namespace and some of these names. */
void expect_children(
    const xmlNode* node, const char* space, std::initializer_list<std::string_view> names
);

/** The text of the child called `name`, which must not stand there twice, or nothing. */
std::optional<std::string> field(const xmlNode* node, const char* name);

/** The attribute's value; it must be there. */
std::string attribute(const xmlNode* node, const char* name);

/** The attribute must have this value. */
void expect(const xmlNode* node, const char* name, std::string_view value);

/** The text and CDATA of an element that holds nothing else. */
std::string text_of(const xmlNode* node);

/** `text` as it stands in an attribute's value. */
std::string escaped(const std::string& text);
