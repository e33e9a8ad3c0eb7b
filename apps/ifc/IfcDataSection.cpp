#include "apps/ifc/IfcDataSection.h"

#include <cctype>

namespace Kelvor {

namespace {

char const* const kDataStart = "DATA;";
char const* const kSectionEnd = "ENDSEC";

bool startsWith(std::string const& content, std::size_t at, char const* word)
{
    return content.compare(at, std::char_traits<char>::length(word), word) == 0;
}

} // namespace

std::size_t IfcDataSection::countInstances(std::string const& content)
{
    std::size_t at = content.find(kDataStart);
    if (at == std::string::npos)
        return 0;
    at += std::char_traits<char>::length(kDataStart);
    std::size_t count = 0;
    bool statementStart = true;
    while (at < content.size()) {
        char const c = content[at];
        if (c == '/' && at + 1 < content.size() && content[at + 1] == '*') {
            std::size_t const end = content.find("*/", at + 2);
            at = end == std::string::npos ? content.size() : end + 2;
            continue;
        }
        if (statementStart && std::isspace(static_cast<unsigned char>(c))) {
            ++at;
            continue;
        }
        if (statementStart) {
            if (startsWith(content, at, kSectionEnd))
                break;
            if (c == '#')
                ++count;
            statementStart = false;
        }
        if (c == '\'') {
            // A quote inside a string is written twice, which reads as a
            // string that ends and a new one that starts at once.
            std::size_t const end = content.find('\'', at + 1);
            at = end == std::string::npos ? content.size() : end + 1;
            continue;
        }
        if (c == ';')
            statementStart = true;
        ++at;
    }
    return count;
}

} // namespace Kelvor
