#include "TarnwickCommon/CKVXml.h"

#include "TarnwickCommon/Common.h"

#include <pugixml.hpp>

namespace Kelvor {

// Our values are handed to the parser unchanged.
static_assert(encoding_auto == static_cast<int>(pugi::encoding_auto), "encoding values");
static_assert(encoding_utf8 == static_cast<int>(pugi::encoding_utf8), "encoding values");
static_assert(encoding_latin1 == static_cast<int>(pugi::encoding_latin1), "encoding values");
static_assert(parse_default == pugi::parse_default, "parse option values");
static_assert(parse_default == 116, "hosts pass the literal 116");
static_assert(parse_wconv_attribute == pugi::parse_wconv_attribute, "parse option values");

namespace {

pugi::xml_node wrap(xml_node const& node)
{
    return pugi::xml_node(node.internal_object());
}

xml_node unwrap(pugi::xml_node const& node)
{
    return xml_node(node.internal_object());
}

xml_parse_result convert(pugi::xml_parse_result const& r)
{
    xml_parse_result result;
    result.status = static_cast<int>(r.status);
    result.offset = r.offset;
    return result;
}

} // namespace

char const* xml_parse_result::description() const
{
    pugi::xml_parse_result r;
    r.status = static_cast<pugi::xml_parse_status>(status);
    return r.description();
}

char const* xml_node::name() const
{
    return wrap(*this).name();
}

char const* xml_node::child_value() const
{
    return wrap(*this).child_value();
}

char const* xml_node::child_value(char const* name) const
{
    return name ? wrap(*this).child_value(name) : "";
}

char const* xml_node::attribute_value(char const* name) const
{
    return name ? wrap(*this).attribute(name).value() : "";
}

xml_node xml_node::child(char const* name) const
{
    return name ? unwrap(wrap(*this).child(name)) : xml_node();
}

xml_node xml_node::first_child() const
{
    // Elements only: text children are reached through child_value.
    for (pugi::xml_node n = wrap(*this).first_child(); n; n = n.next_sibling()) {
        if (n.type() == pugi::node_element)
            return unwrap(n);
    }
    return xml_node();
}

xml_node xml_node::next_sibling(char const* name) const
{
    return name ? unwrap(wrap(*this).next_sibling(name)) : xml_node();
}

xml_node xml_node::next_sibling() const
{
    for (pugi::xml_node n = wrap(*this).next_sibling(); n; n = n.next_sibling()) {
        if (n.type() == pugi::node_element)
            return unwrap(n);
    }
    return xml_node();
}

xml_document::xml_document() : mDocument(new pugi::xml_document) {}

xml_document::~xml_document() = default;

xml_parse_result xml_document::load_file(char const* path, unsigned int options, xml_encoding encoding)
{
    if (!path || !*path) {
        mDocument->reset();
        xml_parse_result result;
        result.status = static_cast<int>(pugi::status_file_not_found);
        return result;
    }
    CKVAString native = Common::normalizePath(path);
    return convert(mDocument->load_file(native.c_str(), options, static_cast<pugi::xml_encoding>(encoding)));
}

xml_parse_result xml_document::load_string(char const* text, unsigned int options)
{
    return convert(mDocument->load_string(text ? text : "", options));
}

xml_node xml_document::root() const
{
    return unwrap(*mDocument);
}

xml_node xml_document::document_element() const
{
    return unwrap(mDocument->document_element());
}

} // namespace Kelvor
