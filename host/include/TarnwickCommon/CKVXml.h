#pragma once

#include <cstddef>
#include <memory>

// The parser's node record, held here only through a pointer so that users
// of these classes need not see the parser's header.
namespace pugi {
struct xml_node_struct;
class xml_document;
} // namespace pugi

namespace Kelvor {

// A small read-only XML interface. Names follow the parser's conventions
// because callers were written against them.

// Same values as the parser's encodings; 0 detects the encoding.
enum xml_encoding
{
    encoding_auto = 0,
    encoding_utf8,
    encoding_utf16_le,
    encoding_utf16_be,
    encoding_utf16,
    encoding_utf32_le,
    encoding_utf32_be,
    encoding_utf32,
    encoding_wchar,
    encoding_latin1
};

// Parse option bits, passed through unchanged. parse_default (116) keeps
// CDATA, expands escapes, normalises attribute white space and line ends.
unsigned int const parse_minimal = 0x0000;
unsigned int const parse_pi = 0x0001;
unsigned int const parse_comments = 0x0002;
unsigned int const parse_cdata = 0x0004;
unsigned int const parse_ws_pcdata = 0x0008;
unsigned int const parse_escapes = 0x0010;
unsigned int const parse_eol = 0x0020;
unsigned int const parse_wconv_attribute = 0x0040;
unsigned int const parse_default = parse_cdata | parse_escapes | parse_wconv_attribute | parse_eol;

struct xml_parse_result
{
    // 0 is success; other values are the parser's status codes.
    int status = 1;
    // Byte offset of the error in the input, when there is one.
    std::ptrdiff_t offset = 0;

    explicit operator bool() const { return status == 0; }
    // A short English description of the status.
    char const* description() const;
};

class xml_named_node_iterator;
template <class It>
class xml_object_range;

// A handle to an element or the document; a default-constructed node is
// empty and every query on it gives an empty node or "".
class xml_node
{
public:
    xml_node() = default;
    explicit xml_node(pugi::xml_node_struct* node) : mNode(node) {}

    bool empty() const { return mNode == nullptr; }
    explicit operator bool() const { return mNode != nullptr; }

    char const* name() const;
    // Text of the first text or CDATA child: "<a>text</a>" gives "text".
    char const* child_value() const;
    // Text of the first text or CDATA child of the first child element `name`.
    char const* child_value(char const* name) const;
    // Value of attribute `name`, or "".
    char const* attribute_value(char const* name) const;

    // First child element called `name`.
    xml_node child(char const* name) const;
    xml_node first_child() const;
    // Next sibling element called `name`.
    xml_node next_sibling(char const* name) const;
    xml_node next_sibling() const;

    // All child elements called `name`, for a range-for loop. The iterators
    // keep the `name` pointer, so the text must outlive the loop.
    xml_object_range<xml_named_node_iterator> children(char const* name) const;

    pugi::xml_node_struct* internal_object() const { return mNode; }

    friend bool operator==(xml_node const& a, xml_node const& b) { return a.mNode == b.mNode; }
    friend bool operator!=(xml_node const& a, xml_node const& b) { return a.mNode != b.mNode; }

private:
    pugi::xml_node_struct* mNode = nullptr;
};

// Walks the sibling elements that share one name.
class xml_named_node_iterator
{
public:
    xml_named_node_iterator() = default;
    xml_named_node_iterator(xml_node const& node, char const* name) : mNode(node), mName(name) {}

    xml_node const& operator*() const { return mNode; }
    xml_node const* operator->() const { return &mNode; }
    xml_named_node_iterator& operator++()
    {
        mNode = mNode.next_sibling(mName);
        return *this;
    }
    xml_named_node_iterator operator++(int)
    {
        xml_named_node_iterator old = *this;
        ++*this;
        return old;
    }

    bool operator==(xml_named_node_iterator const& other) const { return mNode == other.mNode; }
    bool operator!=(xml_named_node_iterator const& other) const { return mNode != other.mNode; }

private:
    xml_node mNode;
    char const* mName = nullptr;
};

template <class It>
class xml_object_range
{
public:
    xml_object_range(It begin, It end) : mBegin(begin), mEnd(end) {}
    It begin() const { return mBegin; }
    It end() const { return mEnd; }
    bool empty() const { return !(mBegin != mEnd); }

private:
    It mBegin;
    It mEnd;
};

inline xml_object_range<xml_named_node_iterator> xml_node::children(char const* name) const
{
    return xml_object_range<xml_named_node_iterator>(xml_named_node_iterator(child(name), name),
                                                     xml_named_node_iterator(xml_node(), name));
}

// An XML document owning its parsed tree. Nodes taken from it are valid
// until the document is reloaded or destroyed.
class xml_document
{
public:
    xml_document();
    ~xml_document();

    xml_document(xml_document const&) = delete;
    xml_document& operator=(xml_document const&) = delete;

    // Replaces the tree with the file's content. The path may use '\\'
    // separators. On failure the tree is empty.
    xml_parse_result load_file(char const* path, unsigned int options = parse_default,
                               xml_encoding encoding = encoding_auto);
    xml_parse_result load_string(char const* text, unsigned int options = parse_default);

    // The document node (parent of the root element).
    xml_node root() const;
    // The root element.
    xml_node document_element() const;
    xml_node child(char const* name) const { return root().child(name); }
    xml_object_range<xml_named_node_iterator> children(char const* name) const { return root().children(name); }

private:
    std::unique_ptr<pugi::xml_document> mDocument;
};

} // namespace Kelvor
