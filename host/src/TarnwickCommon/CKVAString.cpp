#include "TarnwickCommon/CKVAString.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace Kelvor {

namespace {

// Appends vsnprintf output to `out`. The first attempt writes into a stack
// buffer, so short texts cost one formatting pass.
void appendFormatted(std::string& out, char const* fmt, va_list args)
{
    if (!fmt)
        return;
    char buffer[256];
    va_list copy;
    va_copy(copy, args);
    int needed = std::vsnprintf(buffer, sizeof buffer, fmt, copy);
    va_end(copy);
    if (needed < 0)
        return;
    if (static_cast<size_t>(needed) < sizeof buffer) {
        out.append(buffer, static_cast<size_t>(needed));
        return;
    }
    size_t const start = out.size();
    out.resize(start + static_cast<size_t>(needed) + 1);
    std::vsnprintf(&out[start], static_cast<size_t>(needed) + 1, fmt, args);
    out.resize(start + static_cast<size_t>(needed));
}

} // namespace

CKVAString::CKVAString(char const* text)
{
    assign(text);
}

CKVAString& CKVAString::assign(char const* text)
{
    if (!text)
        mText.clear();
    else
        mText.assign(text);
    return *this;
}

CKVAString& CKVAString::append(char const* text)
{
    if (text)
        mText.append(text);
    return *this;
}

CKVAString& CKVAString::append(CKVAString const& other)
{
    mText.append(other.mText);
    return *this;
}

CKVAString& CKVAString::format(char const* fmt, ...)
{
    // Format into a fresh string: an argument may be this string's own c_str().
    std::string result;
    va_list args;
    va_start(args, fmt);
    appendFormatted(result, fmt, args);
    va_end(args);
    mText.swap(result);
    return *this;
}

CKVAString& CKVAString::appendFormat(char const* fmt, ...)
{
    std::string result;
    va_list args;
    va_start(args, fmt);
    appendFormatted(result, fmt, args);
    va_end(args);
    mText.append(result);
    return *this;
}

int CKVAString::find(char c, unsigned int start) const
{
    size_t pos = mText.find(c, start);
    return pos == std::string::npos ? -1 : static_cast<int>(pos);
}

int CKVAString::find(char const* text, unsigned int start) const
{
    if (!text)
        return -1;
    size_t pos = mText.find(text, start);
    return pos == std::string::npos ? -1 : static_cast<int>(pos);
}

int CKVAString::reverseFind(char c) const
{
    size_t pos = mText.rfind(c);
    return pos == std::string::npos ? -1 : static_cast<int>(pos);
}

CKVAString CKVAString::mid(unsigned int start, unsigned int count) const
{
    CKVAString result;
    if (start < mText.size())
        result.mText = mText.substr(start, count);
    return result;
}

unsigned int CKVAString::replace(char from, char to)
{
    unsigned int replaced = 0;
    for (char& c : mText) {
        if (c == from) {
            c = to;
            ++replaced;
        }
    }
    return replaced;
}

int CKVAString::compare(char const* text) const
{
    return std::strcmp(mText.c_str(), text ? text : "");
}

} // namespace Kelvor
