#include "devkit/boxwelld/xml.h"

#include "devkit/boxwelld/account.h"
#include "devkit/boxwelld/files.h"

#include <libxml/parser.h>

namespace {

struct FreeXml {
    void operator()(xmlChar* text) const { xmlFree(text); }
};
using XmlText = std::unique_ptr<xmlChar, FreeXml>;

std::string to_string(const xmlChar* text)
{
    return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

/** Keeps the first complaint: those that follow it are mostly its consequences. */
void keep_first_error(void* parser, xmlErrorPtr error)
{
    auto* first = static_cast<std::string*>(static_cast<xmlParserCtxtPtr>(parser)->_private);
    if (first->empty())
        *first = "line " + std::to_string(error->line) + ": " + one_line(error->message);
}

} // namespace

Document parse_xml(std::string_view text)
{
    const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser(
        xmlNewParserCtxt(), &xmlFreeParserCtxt
    );
    if (!parser)
        throw std::bad_alloc();
    std::string error;
    parser->_private = &error;
    parser->sax->serror = keep_first_error;
    Document document(
        xmlCtxtReadMemory(
            parser.get(), text.data(), static_cast<int>(text.size()), nullptr, nullptr,
            XML_PARSE_NONET
        ),
        &xmlFreeDoc
    );
    if (!document || parser->nsWellFormed == 0)
        throw Refusal("Malformed request: " + error);
    if (document->intSubset != nullptr)
        throw Refusal("Malformed request: a document type is not accepted");
    return document;
}

std::string name_of(const xmlNode* node)
{
    return to_string(node->name);
}

std::string namespace_of(const xmlNode* node)
{
    return node->ns == nullptr ? "" : to_string(node->ns->href);
}

std::vector<xmlNode*> children(const xmlNode* node)
{
    std::vector<xmlNode*> found;
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE)
            found.push_back(child);
        else if (child->type != XML_COMMENT_NODE && xmlIsBlankNode(child) == 0)
            throw Refusal("Unexpected text in " + name_of(node));
    }
    return found;
}

std::string attribute(const xmlNode* node, const char* name)
{
    const XmlText value(xmlGetNoNsProp(node, reinterpret_cast<const xmlChar*>(name)));
    if (!value)
        throw Refusal(name_of(node) + " has no attribute " + name);
    return to_string(value.get());
}

std::string text_of(const xmlNode* node)
{
    for (const xmlNode* child = node->children; child != nullptr; child = child->next)
        if (child->type != XML_TEXT_NODE && child->type != XML_CDATA_SECTION_NODE)
            throw Refusal(name_of(node) + " holds more than text");
    return to_string(XmlText(xmlNodeGetContent(node)).get());
}

std::string escaped(const std::string& text)
{
    const XmlText value(
        xmlEncodeSpecialChars(nullptr, reinterpret_cast<const xmlChar*>(text.c_str()))
    );
    return to_string(value.get());
}
