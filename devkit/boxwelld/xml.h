/** A request as a tree: a thin layer over libxml2 that refuses (Refusal) what is not well-formed.
 */
#pragma once

#include <libxml/tree.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

using Document = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

/** Parses without network and without entities of its own: a document type is refused. */
Document parse_xml(std::string_view text);

std::string name_of(const xmlNode* node);
std::string namespace_of(const xmlNode* node);

/** The child elements; text beside them is refused unless it is blank. */
std::vector<xmlNode*> children(const xmlNode* node);

/** The attribute's value; refused when it is missing. */
std::string attribute(const xmlNode* node, const char* name);

/** The text and CDATA of an element that holds nothing else. */
std::string text_of(const xmlNode* node);

/** `text` as it stands in an attribute's value. */
std::string escaped(const std::string& text);
