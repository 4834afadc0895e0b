#include "devkit/boxwelld/xml.h"

#include "devkit/boxwelld/account.h"
#include "devkit/boxwelld/files.h"
#include "devkit/boxwelld/limits.h"

#include <libxml/parser.h>

#include <algorithm>

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
void keep_first_error(std::string& first, const xmlError& error)
{
    if (first.empty() && error.level >= XML_ERR_ERROR) {
        const std::string line = "line " + std::to_string(error.line) + ": ";
        first = (error.line > 0 ? line : "") + one_line(error.message);
    }
}

void keep_parser_error(void* parser, xmlErrorPtr error)
{
    keep_first_error(
        *static_cast<std::string*>(static_cast<xmlParserCtxtPtr>(parser)->_private), *error
    );
}

/** Has the errors that are no parser's, those of converting to UTF-8, kept too, not printed. */
class OtherErrors {
  public:
    explicit OtherErrors(std::string& first) { xmlSetStructuredErrorFunc(&first, keep); }
    OtherErrors(const OtherErrors&) = delete;
    OtherErrors& operator=(const OtherErrors&) = delete;
    ~OtherErrors() { xmlSetStructuredErrorFunc(nullptr, nullptr); }

  private:
    static void keep(void* first, xmlErrorPtr error)
    {
        keep_first_error(*static_cast<std::string*>(first), *error);
    }
};

void refuse_document_type(void* parser, const xmlChar*, const xmlChar*, const xmlChar*)
{
    auto* context = static_cast<xmlParserCtxtPtr>(parser);
    static_cast<std::string*>(context->_private)->assign("a document type is not accepted");
    context->wellFormed = 0;
    xmlStopParser(context);
}

} // namespace

Document parse_xml(std::string_view text)
{
    expect_within_limits(text);
    const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser(
        xmlNewParserCtxt(), &xmlFreeParserCtxt
    );
    if (!parser) {
        throw std::bad_alloc();
    }
    std::string error;
    const OtherErrors others(error);
    parser->_private = &error;
    parser->sax->serror = keep_parser_error;
    parser->sax->internalSubset = refuse_document_type;
    Document document(
        xmlCtxtReadMemory(
            parser.get(), text.data(), static_cast<int>(text.size()), nullptr, nullptr,
            XML_PARSE_NONET
        ),
        &xmlFreeDoc
    );
    if (!document || parser->nsWellFormed == 0) {
        throw Refusal("Malformed request: " + error);
    }
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
        if (child->type == XML_ELEMENT_NODE) {
            found.push_back(child);
        } else if (child->type != XML_COMMENT_NODE && xmlIsBlankNode(child) == 0) {
            throw Refusal("Unexpected text in " + name_of(node));
        }
    }
    return found;
}

const xmlNode* only_child(const xmlNode* node, const char* space, const char* name)
{
    const std::vector<xmlNode*> found = children(node);
    if (found.size() != 1 || name_of(found[0]) != name || namespace_of(found[0]) != space) {
        throw Refusal(name_of(node) + " must hold one element " + name);
    }
    return found[0];
}

void expect_children(
    const xmlNode* node, const char* space, std::initializer_list<std::string_view> names
)
{
    for (const xmlNode* child : children(node)) {
        if (namespace_of(child) != space ||
            std::find(names.begin(), names.end(), name_of(child)) == names.end()) {
            throw Refusal(name_of(node) + " holds the unknown element " + name_of(child));
        }
    }
}

std::optional<std::string> field(const xmlNode* node, const char* name)
{
    std::optional<std::string> value;
    for (const xmlNode* child : children(node)) {
        if (name_of(child) != name) {
            continue;
        }
        if (value) {
            throw Refusal(name_of(node) + " holds " + name + " twice");
        }
        value = text_of(child);
    }
    return value;
}

std::string attribute(const xmlNode* node, const char* name)
{
    const XmlText value(xmlGetNoNsProp(node, reinterpret_cast<const xmlChar*>(name)));
    if (!value) {
        throw Refusal(name_of(node) + " has no attribute " + name);
    }
    return to_string(value.get());
}

void expect(const xmlNode* node, const char* name, std::string_view value)
{
    if (attribute(node, name) != value) {
        throw Refusal(name_of(node) + " has the unknown " + name + ' ' + attribute(node, name));
    }
}

std::string text_of(const xmlNode* node)
{
    for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
        if (child->type != XML_TEXT_NODE && child->type != XML_CDATA_SECTION_NODE) {
            throw Refusal(name_of(node) + " holds more than text");
        }
    }
    return to_string(XmlText(xmlNodeGetContent(node)).get());
}

std::string escaped(const std::string& text)
{
    const XmlText value(
        xmlEncodeSpecialChars(nullptr, reinterpret_cast<const xmlChar*>(text.c_str()))
    );
    return to_string(value.get());
}
